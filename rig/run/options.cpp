#include "rig/run/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <stdexcept>
#include <type_traits>

#include "rig/run/exit_codes.h"
#include "rig/run/make_plan.h"
#include "rig/run/option_readers.h"
#include "rig/run/program.h"
#include "rig/run/raw_options.h"

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

Lines NAME=VALUE, 'filter NAME' and 'sharpness PERCENT' on standard input change the
parameters and the filter while the program runs; the program itself reads an empty
standard input.

Exit code: the program's (128 + N when signal N killed it); 2 for a bad option,
3 when the device's surroundings could not be made, 4 when the program ended
well but a picture or the statistics asked for did not come about, 126 and 127 when the program
cannot be run or found.)";

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
        for (std::string line; std::getline(lines, line);) {
            result += (result.empty() ? "" : "\n") + wrapped(line);
        }
        return result;
    }
    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_type_name().empty() ? "" : " " + option->get_type_name();
    }
    std::string make_usage(const CLI::App*, std::string name) const override {
        return "Usage: " + name + " [OPTIONS] -- PROGRAM [ARGS...]\n";
    }
};

template <class Value>
constexpr bool kIsList = false;
template <class Item>
constexpr bool kIsList<std::vector<Item>> = true;

template <class Value>
void add(CLI::App& app, RawOption& option, const std::string& help) {
    const std::string initial = option.initial.empty() ? "" : " (default " + option.initial + ")";
    if constexpr (std::is_same_v<Value, kinds::Flag>) {
        app.add_flag(option.name, option.texts, help);
    } else {
        app.add_option(option.name, option.texts, help + initial)
            ->allow_extra_args(false)
            ->expected(1, kIsList<Value> ? CLI::detail::expected_max_vector_size : 1)
            ->type_name(option.argument);
    }
}

void addOptions(CLI::App& app, RawOptions& raw) {
#define LOADER_OPTION(kind, member, name, argument, initial, help) \
    add<kinds::kind>(app, raw.member, help);
#define LAUNCHER_OPTION(kind, member, name, argument, initial, help) \
    add<kinds::kind>(app, raw.member, help);
#include "rig/device/options.in"
}

}  // namespace

std::optional<Plan> parseCommandLine(int argc, char** argv, int& exitCode) {
    RawOptions raw;
    CLI::App app(
        "Runs a GLES program through the plug-in on this machine's driver, in surroundings like "
        "a device's.\nEverything after -- is the program and its arguments.",
        "vesko-run");
    app.footer(kExamples);
    app.set_help_flag("-h,--help", "This text");
    app.formatter(std::make_shared<HelpText>());
    addOptions(app, raw);

    std::vector<std::string> options;
    int i = 1;
    for (; i < argc && strcmp(argv[i], "--") != 0; ++i) options.insert(options.begin(), argv[i]);
    const std::vector<std::string> command(argv + std::min(i + 1, argc), argv + argc);
    try {
        app.parse(options);
        Plan plan = makePlan(raw);
        exitCode = chooseProgram(command, plan);
        if (exitCode == 0) return plan;
    } catch (const CLI::CallForHelp&) {
        fputs(app.help().c_str(), stdout);
        exitCode = 0;
    } catch (const std::runtime_error& error) {  // BadOption, or one of CLI11's
        fprintf(stderr, "vesko-run: %s\nvesko-run --help explains the options\n", error.what());
        exitCode = kExitUsage;
    }
    return std::nullopt;
}

}  // namespace rig
