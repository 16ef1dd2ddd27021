#include "desktop/run/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

#include "desktop/device/quirk_names.h"
#include "desktop/run/exit_codes.h"
#include "desktop/run/option_values.h"
#include "desktop/run/program.h"

namespace rig {

namespace {

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
3 when the device's surroundings could not be made, 126 and 127 when the program
cannot be run or found.)";

std::string quirkHelp() {
    std::string help =
        "Make the driver behave in another way, NAME@FRAME from that frame on; "
        "repeatable:";
    for (const QuirkName& quirk : kQuirkNames)
        help += std::string("\n") + quirk.name + ": " + quirk.effect;
    return help;
}

class HelpText : public CLI::Formatter {
public:
    HelpText() { column_width(28); }
    std::string make_usage(const CLI::App*, std::string name) const override {
        return "Usage: " + name + " [OPTIONS] -- PROGRAM [ARGS...]\n";
    }
};

void addPluginOptions(CLI::App& app, Given& given) {
    app.add_option("--game", given.game,
                   "The process name that the plug-in sees: sgame, genshin, pubgmhd, or none for "
                   "the program's own (default sgame)")
        ->check(CLI::IsMember({"sgame", "genshin", "pubgmhd", "none"}));
    app.add_option("--thread-name", given.threadName,
                   "Name given to a thread that makes a context current; '' gives none (default "
                   "UnityGfx, the name of sgame's render thread)");
    app.add_option("--set", given.set,
                   "NAME=VALUE: a parameter of the kernel node; repeatable (status=7, enable=1, "
                   "FB0Factor=100 and gameInternalFBOFactor=100 unless given)")
        ->take_all();
    app.add_option("--at", given.at,
                   "FRAME:NAME=VALUE: change a parameter right after that swap; repeatable")
        ->take_all();
    app.add_option("--config", given.config,
                   "The device's configuration file /data/system/vkd/qogl (absent by default)");
    app.add_option("--property", given.properties, "NAME=VALUE: a system property; repeatable")
        ->take_all();
    app.add_option("--service", given.service,
                   "What the game service does: absent, fail, exception, or the number that it "
                   "answers (default absent)");
    app.add_flag("--no-plugin", given.noPlugin, "The same loader with the driver alone");
}

void addRunOptions(CLI::App& app, Given& given) {
    app.add_option("--driver", given.driver,
                   "Mesa's driver: llvmpipe, softpipe, zink (over lavapipe), or system for its "
                   "own choice (default system)")
        ->check(CLI::IsMember({"llvmpipe", "softpipe", "zink", "system"}));
    app.add_option("--display", given.display,
                   "auto: a private Xvfb where neither DISPLAY nor WAYLAND_DISPLAY is set; xvfb: "
                   "always; none: no window system, for programs on pbuffers (default auto)")
        ->check(CLI::IsMember({"auto", "xvfb", "none"}));
    app.add_option("--size", given.size, "WIDTHxHEIGHT: the size that every pbuffer gets");
    app.add_option("--capture", given.captures,
                   "FILE.png: the window as frame 1 presents it, or the frame of the --frame "
                   "that belongs to it; repeatable")
        ->take_all();
    app.add_option("--frame", given.captureFrames,
                   "The frame, counted from 1, of the --capture in the same place; repeatable")
        ->check(CLI::Range(1, INT_MAX))
        ->take_all();
    app.add_option("--frames", given.frames, "End the program, with exit code 0, after that swap")
        ->check(CLI::Range(1, INT_MAX));
    app.add_option("--stats", given.stats,
                   "FILE.json: for each frame its time, the framebuffers drawn to with their "
                   "sizes, and the parameters in force. The driver finishes each frame before "
                   "its time is taken (glFinish), so that software drivers are timed honestly");
    app.add_option("--quirk", given.quirks, quirkHelp())->take_all();
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
