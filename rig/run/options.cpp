#include "rig/run/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sstream>

#include "rig/device/quirk_names.h"
#include "rig/run/exit_codes.h"
#include "rig/run/option_values.h"
#include "rig/run/program.h"

namespace rig {

namespace {

constexpr size_t kHelpTextWidth = 70;

constexpr char kExamples[] = R"(
Examples:
  vesko-run --set FB0Factor=50 --capture half.png -- glmark2-es2 -b build
      draw the window's contents at half size and show the first frame
  vesko-run --no-plugin --capture plain.png -- glmark2-es2 -b build
      the same picture from the driver alone
  vesko-run --at 100:FB0Factor=75 --frames 300 --stats run.json -- es2gears_x11
      switch to 75 percent after the 100th frame, end after the 300th
  vesko-run --game genshin --config qogl.txt -- PROGRAM

Lines NAME=VALUE on standard input change the parameters while the program runs;
the program itself reads an empty standard input.

Exit code: the program's (128 + N when signal N killed it); 2 for a bad option,
3 when the device's surroundings could not be made, 4 when the program ended
well but a picture or the statistics asked for did not come about, 126 and 127 when the program
cannot be run or found.)";

std::string quirkHelp() {
    std::string help =
        "Make the driver behave in another way, from frame FROM on, up to frame TO; "
        "repeatable:";
    for (const QuirkName& quirk : kQuirkNames)
        help += std::string("\n") + quirk.name + ": " + quirk.effect;
    return help;
}

std::string wrapped(const std::string& line) {
    std::istringstream words(line);
    std::string result;
    size_t column = 0;
    for (std::string word; words >> word; column += word.size() + 1) {
        const bool full = column + word.size() > kHelpTextWidth;
        if (full) column = 0;
        result += (result.empty() ? "" : full ? "\n" : " ") + word;
    }
    return result;
}

class HelpText : public CLI::Formatter {
public:
    HelpText() { column_width(28); }
    // One indented paragraph per line of the description.
    std::string make_option_desc(const CLI::Option* option) const override {
        std::istringstream lines(option->get_description());
        std::string result;
        for (std::string line; std::getline(lines, line);)
            result += (result.empty() ? "" : "\n") + wrapped(line);
        return result;
    }
    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_type_name().empty() ? "" : " " + option->get_type_name();
    }
    std::string make_usage(const CLI::App*, std::string name) const override {
        return "Usage: " + name + " [OPTIONS] -- PROGRAM [ARGS...]\n";
    }
};

void addPluginOptions(CLI::App& app, Given& given) {
    std::vector<std::string> games;
    for (const android::Game& game : android::kGames) games.emplace_back(game.name);
    app.add_option("--game", given.game,
                   "The process name that the plug-in sees: " + CLI::detail::join(games, ", ") +
                       ", or none for the program's own (default " + given.game + ")")
        ->type_name("GAME");
    games.emplace_back("none");
    app.get_option("--game")->check(CLI::IsMember(games));
    app.add_option("--thread-name", given.threadName,
                   "Name given to a thread that makes a context current; '' gives none (default " +
                       given.threadName + ", the name of " + given.game + "'s render thread)")
        ->type_name("NAME");
    app.add_option("--set", given.set,
                   "A parameter of the kernel node; repeatable (status=7, enable=1, "
                   "FB0Factor=100 and gameInternalFBOFactor=100 unless given)")
        ->allow_extra_args(false)
        ->type_name("NAME=VALUE");
    app.add_option("--at", given.at, "Change a parameter right after swap FRAME; repeatable")
        ->allow_extra_args(false)
        ->type_name("FRAME:NAME=VALUE");
    app.add_option("--config", given.config,
                   "The device's configuration file /data/system/vkd/qogl (absent by default)")
        ->type_name("FILE");
    app.add_option("--property", given.properties, "A system property; repeatable")
        ->allow_extra_args(false)
        ->type_name("NAME=VALUE");
    app.add_option("--service", given.service,
                   "What the game service does: absent, fail, exception, or the number that it "
                   "answers (default absent)")
        ->type_name("ANSWER");
    app.add_flag("--no-plugin", given.noPlugin, "The same loader with the driver alone");
    app.add_flag("--bare", given.bare,
                 "Do not put the program's own shader program back into use after a swap; the "
                 "plug-in's first blit leaves its own, which programs that set theirs only once "
                 "do not expect");
    app.add_option("--log", given.log,
                   "Which of the plug-in's log lines appear on standard error: debug (all), info, "
                   "error or none (default info)")
        ->type_name("LEVEL")
        ->check(CLI::IsMember({"debug", "info", "error", "none"}));
}

void addRunOptions(CLI::App& app, Given& given) {
    app.add_option("--driver", given.driver,
                   "Mesa's driver: llvmpipe, softpipe, zink (over lavapipe), or system for its "
                   "own choice (default system)")
        ->type_name("DRIVER")
        ->check(CLI::IsMember({"llvmpipe", "softpipe", "zink", "system"}));
    app.add_option("--display", given.display,
                   "auto: a private Xvfb where neither DISPLAY nor WAYLAND_DISPLAY is set; xvfb: "
                   "always; none: no window system, for programs on pbuffers (default auto)")
        ->type_name("MODE")
        ->check(CLI::IsMember({"auto", "xvfb", "none"}));
    app.add_option("--size", given.size, "The size that every pbuffer gets")
        ->type_name("WIDTHxHEIGHT");
    app.add_option("--capture", given.captures,
                   "A picture of the window as frame 1 presents it, or the frame of the --frame "
                   "that belongs to it; repeatable")
        ->allow_extra_args(false)
        ->type_name("FILE.png");
    app.add_option("--frame", given.captureFrames,
                   "The frame, counted from 1, of the --capture in the same place; repeatable")
        ->type_name("N")
        ->check(CLI::PositiveNumber)
        ->allow_extra_args(false);
    app.add_option("--frames", given.frames, "End the program, with exit code 0, after that swap")
        ->type_name("N")
        ->check(CLI::PositiveNumber);
    app.add_option("--stats", given.stats,
                   "For each frame its time, the framebuffers drawn to with their "
                   "sizes, and the parameters in force. The driver finishes each frame before "
                   "its time is taken (glFinish), so that software drivers are timed honestly")
        ->type_name("FILE.json");
    app.add_option("--count", given.count,
                   "How many calls went into the plug-in, came out of it, and passed it by, in "
                   "all and for each entry; written when the program has ended, however it did")
        ->type_name("FILE.json");
    app.add_flag("--status", given.status,
                 "Say on standard error, once a second, what the plug-in does now: game, context, "
                 "sizes, factor, frames per second, and why it does not scale where it does not");
    app.add_option("--clock", given.clock,
                   "The program's clock: real, or step:MS, which moves on by that many "
                   "milliseconds at each swap, so that programs that animate by time show the same "
                   "in the same frame of every run (default real)")
        ->type_name("CLOCK");
    app.add_option("--quirk", given.quirks, quirkHelp())
        ->allow_extra_args(false)
        ->type_name("NAME[@FROM[-TO]]");
}

}  // namespace

std::optional<Plan> parseCommandLine(int argc, char** argv, int& exitCode) {
    Given given;
    CLI::App app(
        "Runs a GLES program through the plug-in on this machine's driver, in surroundings like "
        "a device's.\nEverything after -- is the program and its arguments.",
        "vesko-run");
    app.footer(kExamples);
    app.set_help_flag("-h,--help", "This text");
    app.formatter(std::make_shared<HelpText>());
    addPluginOptions(app, given);
    addRunOptions(app, given);

    std::vector<std::string> options;
    int i = 1;
    for (; i < argc && strcmp(argv[i], "--") != 0; ++i) options.insert(options.begin(), argv[i]);
    const std::vector<std::string> command(argv + std::min(i + 1, argc), argv + argc);
    try {
        app.parse(options);
        Plan plan = planFrom(given);
        exitCode = chooseProgram(command, plan);
        if (exitCode == 0) return plan;
    } catch (const CLI::CallForHelp&) {
        fputs(app.help().c_str(), stdout);
        exitCode = 0;
    } catch (const CLI::ParseError& error) {
        fprintf(stderr, "vesko-run: %s\nvesko-run --help explains the options\n", error.what());
        exitCode = kExitUsage;
    }
    return std::nullopt;
}

}  // namespace rig
