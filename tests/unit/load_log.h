#pragma once

#include <string>

const std::string& loadLog();
