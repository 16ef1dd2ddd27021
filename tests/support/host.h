// What a process that hosts the library supplies to it, for tests: the log, the
// system properties, the thread-pointer array and the binder service manager.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace host {

// The lines logged since the last call, one a line: "E EGL_HOOK text". Line
// feeds within a text are shown as \n, and the prefix of the messages of
// FBOBase, whose line number means nothing, as "FBOBase.operation: ".
std::string takeLog();
// Whether lines are kept; they are counted in any case.
void keepLog(bool keep);
// Called for each line from now on, on the thread that logs it.
void onLog(void (*listener)(const std::string& line));
long loggedLines();
bool logHolds(const std::string& line);
// Waits up to `seconds` for the line; what was logged stays to be taken.
bool waitForLog(const std::string& line, double seconds = 2);

std::map<std::string, std::string>& properties();

// The game service behind the stand-in service manager.
struct GameService {
    enum { Absent, Failing, Throwing, Answering } state = Absent;
    int answer = 0;
    // "NAME: transact(CODE, FLAGS) TOKEN [INTEGERS...]" for each transaction.
    std::vector<std::string> requests;
};
GameService& gameService();

// What open() finds at `path` from now on: the file of an open descriptor,
// or with -1 what lies there.
void serveFile(const std::string& path, int descriptor);

// Reserves room for longer process names, by running the program again if need
// be. To be called first in main.
void reserveProcessName(char** argv);
// What /proc/PID/cmdline tells from now on.
void setProcessName(const std::string& name);

}  // namespace host
