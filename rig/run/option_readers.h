// From what was typed to checked values: one function for each kind of option.
#pragma once

#include <stdexcept>
#include <string>

#include "rig/device/option_kinds.h"
#include "rig/run/raw_options.h"

namespace rig {

// Its text names the option, what is wrong with it, and the remedy.
class BadOption : public std::runtime_error {
public:
    BadOption(const std::string& option, const std::string& why)
        : std::runtime_error(option + ": " + why) {}
};

// All throw BadOption.
kinds::Flag readFlag(const RawOption& option);
kinds::Choice readChoice(const RawOption& option);
kinds::ThreadName readThreadName(const RawOption& option);
kinds::ServiceAnswer readServiceAnswer(const RawOption& option);
kinds::Percentage readPercentage(const RawOption& option);
kinds::InputFile readInputFile(const RawOption& option);
kinds::OutputFile readOutputFile(const RawOption& option);
kinds::OutputFiles readOutputFiles(const RawOption& option);
kinds::FrameCount readFrameCount(const RawOption& option);
kinds::Frames readFrames(const RawOption& option);
kinds::Size readSize(const RawOption& option);
kinds::ClockStep readClockStep(const RawOption& option);
kinds::Parameters readParameters(const RawOption& option);
kinds::ParameterChanges readParameterChanges(const RawOption& option);
kinds::Properties readProperties(const RawOption& option);
kinds::QuirkRequests readQuirkRequests(const RawOption& option);

}  // namespace rig
