// JSON for strings of any bytes. JSON is Unicode, file names and arguments are
// not: each byte of a string stands in the text as the code point of its value.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace rig {

std::string textFromJson(nlohmann::json document);
// Throws std::exception on a text that textFromJson did not make.
nlohmann::json jsonFromText(const std::string& text);

}  // namespace rig
