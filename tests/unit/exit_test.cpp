// Leaving the process: see exit_probe.cpp. Also run where the kernel node exists,
// so that there is a poll thread to be ended.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace {

// The exit code, -signal if killed, or -1000 after five seconds.
int runProbe(const char* argument = nullptr) {
    const pid_t child = fork();
    if (child == 0) {
        const char* const command[] = {EXIT_PROBE, argument, nullptr};
        execvp(command[0], const_cast<char**>(command));
        _exit(127);
    }
    int status = 0;
    for (int i = 0; i < 500 && waitpid(child, &status, WNOHANG) == 0; ++i) {
        if (i == 499) {
            kill(child, SIGKILL);
            waitpid(child, &status, 0);
            return -1000;
        }
        usleep(10000);
    }
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace

// A race by nature, so not left to a single run.
TEST(Exit, CallsDuringAndAfterTheLibrarysDestructorsAreSafe) {
    for (int i = 0; i < 20; ++i) ASSERT_EQ(runProbe(), 23) << "run " << i;
}

TEST(Exit, AProcessWithoutAThreadKeyIsServedByTheDriver) { EXPECT_EQ(runProbe("keys"), 23); }
