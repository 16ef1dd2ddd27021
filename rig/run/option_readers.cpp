#include "rig/run/option_readers.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <optional>
#include <sstream>
#include <string_view>

#include "rig/device/parameter_node.h"
#include "rig/device/quirk_names.h"

namespace rig {

namespace {

constexpr size_t kThreadNameMax = 15;
constexpr size_t kPropertyMax = 91;
constexpr int kSizeMax = 16384;
constexpr double kClockStepMin = 0.001;  // milliseconds
constexpr double kClockStepMax = 10000;

[[noreturn]] void refuse(const RawOption& option, const std::string& why) {
    throw BadOption(option.name, why);
}

std::optional<int> wholeNumber(std::string_view text) {
    if (!text.empty() && text[0] == '+') text.remove_prefix(1);
    int value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || stop != text.data() + text.size()) return std::nullopt;
    return value;
}

int number(const RawOption& option, const std::string& text, int low, int high) {
    const std::optional<int> value = wholeNumber(text);
    if (value && *value >= low && *value <= high) return *value;
    refuse(option, "'" + text + "' is not a whole number from " + std::to_string(low) + " to " +
                       std::to_string(high));
}

std::vector<std::string> alternatives(const std::string& argument) {
    std::vector<std::string> names;
    std::istringstream stream(argument);
    for (std::string name; std::getline(stream, name, '|');) names.push_back(name);
    return names;
}

bool isAlternative(const RawOption& option) {
    for (const std::string& name : alternatives(option.argument)) {
        if (option.text() == name) return true;
    }
    return false;
}

Parameter assignment(const RawOption& option, const std::string& text) {
    Parameter parameter;
    try {
        parameter = parseAssignment(text);
    } catch (const std::invalid_argument& error) {
        refuse(option, std::string(error.what()) + "; give NAME=VALUE, for example FB0Factor=75");
    }
    if (!isKnownParameter(parameter.name)) {
        fprintf(stderr, "vesko-run: %s: the plug-in knows no parameter '%s'; passed on as it is\n",
                option.name.c_str(), parameter.name.c_str());
    }
    return parameter;
}

void setParameter(std::vector<Parameter>& parameters, const Parameter& wanted) {
    for (Parameter& parameter : parameters) {
        if (parameter.name == wanted.name) {
            parameter.value = wanted.value;
            return;
        }
    }
    parameters.push_back(wanted);
}

}  // namespace

kinds::Flag readFlag(const RawOption& option) {
    constexpr char kNoValue[] = "true";  // CLI11's word for a flag without one
    for (const std::string& text : option.texts) {
        if (text != kNoValue) refuse(option, "takes no value; leave out '=" + text + "'");
    }
    return option.given();
}

kinds::Choice readChoice(const RawOption& option) {
    if (!isAlternative(option)) {
        refuse(option, "'" + option.text() + "' is none of " + option.argument);
    }
    return option.text();
}

kinds::ThreadName readThreadName(const RawOption& option) {
    if (option.text().size() > kThreadNameMax) {
        refuse(option, "'" + option.text() + "' is longer than 15 characters");
    }
    return option.text();
}

kinds::ServiceAnswer readServiceAnswer(const RawOption& option) {
    const bool isName = isAlternative(option) && option.text() != "N";
    if (!isName && !wholeNumber(option.text())) {
        refuse(option,
               "'" + option.text() + "' is none of absent, fail, exception or a whole number");
    }
    return option.text();
}

kinds::Percentage readPercentage(const RawOption& option) {
    return option.given() ? std::to_string(number(option, option.text(), 0, 100)) : "";
}

kinds::FrameCount readFrameCount(const RawOption& option) {
    return option.given() ? number(option, option.text(), 1, INT_MAX) : 0;
}

kinds::Frames readFrames(const RawOption& option) {
    std::vector<int> frames;
    for (const std::string& text : option.texts) frames.push_back(number(option, text, 1, INT_MAX));
    return frames;
}

kinds::Size readSize(const RawOption& option) {
    if (!option.given()) return {};
    const std::string& text = option.text();
    const size_t x = text.find('x');
    if (x == std::string::npos) {
        refuse(option, "'" + text + "' is not WIDTHxHEIGHT, for example 1280x720");
    }
    return {number(option, text.substr(0, x), 1, kSizeMax),
            number(option, text.substr(x + 1), 1, kSizeMax)};
}

kinds::ClockStep readClockStep(const RawOption& option) {
    constexpr std::string_view kPrefix = "step:";
    constexpr double kNanoseconds = 1e6;
    const std::string& text = option.text();
    if (text == "real") return 0;
    if (text.rfind(kPrefix, 0) == 0) {
        const char* const begin = text.data() + kPrefix.size();
        const char* const end = text.data() + text.size();
        double milliseconds = 0;
        const auto [stop, error] = std::from_chars(begin, end, milliseconds);
        const bool fits = milliseconds >= kClockStepMin && milliseconds <= kClockStepMax;
        if (error == std::errc() && stop == end && fits) {
            return std::llround(milliseconds * kNanoseconds);
        }
    }
    refuse(option, "'" + text +
                       "' is neither 'real' nor 'step:MS' with milliseconds from 0.001 to "
                       "10000, for example step:16.667");
}

// Factors that the node never names stay -1 in the plug-in, which scales to
// nothing: hence initial values that are always there.
kinds::Parameters readParameters(const RawOption& option) {
    std::vector<Parameter> parameters;
    std::istringstream initial(option.initial);
    for (std::string text; initial >> text;) setParameter(parameters, assignment(option, text));
    for (const std::string& text : option.texts) {
        setParameter(parameters, assignment(option, text));
    }
    return parameters;
}

kinds::ParameterChanges readParameterChanges(const RawOption& option) {
    std::vector<ParameterChange> changes;
    for (const std::string& text : option.texts) {
        const size_t colon = text.find(':');
        if (colon == std::string::npos) {
            refuse(option, "'" + text +
                               "' has no ':'; give FRAME:NAME=VALUE, for example "
                               "100:FB0Factor=75");
        }
        const int frame = number(option, text.substr(0, colon), 1, INT_MAX);
        const Parameter parameter = assignment(option, text.substr(colon + 1));
        changes.push_back({frame, parameter.name, parameter.value});
    }
    return changes;
}

kinds::Properties readProperties(const RawOption& option) {
    std::vector<Property> properties;
    for (const std::string& text : option.texts) {
        const size_t equals = text.find('=');
        if (equals == 0 || equals == std::string::npos) {
            refuse(option, "'" + text + "' is not NAME=VALUE");
        }
        if (text.size() - equals - 1 > kPropertyMax) {
            refuse(option, "the value in '" + text + "' is longer than 91 characters");
        }
        properties.push_back({text.substr(0, equals), text.substr(equals + 1)});
    }
    return properties;
}

kinds::QuirkRequests readQuirkRequests(const RawOption& option) {
    std::vector<QuirkRequest> quirks;
    for (const std::string& text : option.texts) {
        const size_t at = text.find('@');
        QuirkRequest request{text.substr(0, at), 1};
        std::string all;
        bool known = false;
        for (const QuirkName& quirk : kQuirkNames) {
            known = known || request.name == quirk.name;
            all += std::string(all.empty() ? "" : ", ") + quirk.name;
        }
        if (!known) refuse(option, "'" + request.name + "' is none of " + all);
        if (at != std::string::npos) {
            const std::string frames = text.substr(at + 1);
            const size_t dash = frames.find('-');
            request.fromFrame = number(option, frames.substr(0, dash), 1, INT_MAX);
            if (dash != std::string::npos) {
                request.toFrame =
                    number(option, frames.substr(dash + 1), request.fromFrame, INT_MAX);
            }
        }
        for (const QuirkRequest& other : quirks) {
            if (other.name == request.name) {
                refuse(option, "'" + request.name + "' is given twice");
            }
        }
        quirks.push_back(request);
    }
    return quirks;
}

std::string quirkHelp() {
    std::string help =
        "Make the driver behave in another way, from frame FROM on, up to frame TO; "
        "repeatable:";
    for (const QuirkName& quirk : kQuirkNames) {
        help += std::string("\n") + quirk.name + ": " + quirk.effect;
    }
    return help;
}

}  // namespace rig
