#include "rig/device/json_bytes.h"

namespace rig {

namespace {

using nlohmann::json;

std::string utf8FromBytes(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        if (value < 0x80) {
            text += byte;
        } else {
            text += static_cast<char>(0xC0 | value >> 6);
            text += static_cast<char>(0x80 | (value & 0x3F));
        }
    }
    return text;
}

std::string bytesFromUtf8(const std::string& text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto value = static_cast<unsigned char>(text[i]);
        if (value < 0x80 || i + 1 == text.size()) {
            bytes += text[i];
        } else {
            bytes += static_cast<char>((value & 0x03) << 6 | (text[++i] & 0x3F));
        }
    }
    return bytes;
}

// Names of members are our own.
void changeStrings(json& node, std::string (*change)(const std::string&)) {
    if (node.is_string()) {
        node = change(node.get_ref<const std::string&>());
    } else if (node.is_structured()) {
        for (json& child : node) changeStrings(child, change);
    }
}

}  // namespace

std::string textFromJson(json document) {
    changeStrings(document, utf8FromBytes);
    return document.dump();
}

json jsonFromText(const std::string& text) {
    json document = json::parse(text);
    changeStrings(document, bytesFromUtf8);
    return document;
}

}  // namespace rig
