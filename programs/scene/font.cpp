#include "programs/scene/font.h"

#include <cstddef>
#include <vector>

namespace scene {
namespace {

// The rows of a letter from top to bottom, the leftmost dot in bit 4.
struct Letter {
    char c;
    unsigned char rows[kLetterHeight];
};

constexpr Letter kLetters[] = {
    {'0', {14, 17, 19, 21, 25, 17, 14}}, {'1', {4, 12, 4, 4, 4, 4, 14}},
    {'2', {14, 17, 1, 6, 8, 16, 31}},    {'3', {14, 17, 1, 6, 1, 17, 14}},
    {'4', {2, 6, 10, 18, 31, 2, 2}},     {'5', {31, 16, 30, 1, 1, 17, 14}},
    {'6', {6, 8, 16, 30, 17, 17, 14}},   {'7', {31, 1, 2, 4, 4, 8, 8}},
    {'8', {14, 17, 17, 14, 17, 17, 14}}, {'9', {14, 17, 17, 15, 1, 2, 12}},
    {'A', {14, 17, 17, 31, 17, 17, 17}}, {'B', {30, 17, 17, 30, 17, 17, 30}},
    {'C', {14, 17, 16, 16, 16, 17, 14}}, {'D', {30, 17, 17, 17, 17, 17, 30}},
    {'E', {31, 16, 16, 30, 16, 16, 31}}, {'F', {31, 16, 16, 30, 16, 16, 16}},
    {'G', {14, 17, 16, 23, 17, 17, 15}}, {'H', {17, 17, 17, 31, 17, 17, 17}},
    {'I', {14, 4, 4, 4, 4, 4, 14}},      {'J', {7, 2, 2, 2, 2, 18, 12}},
    {'K', {17, 18, 20, 24, 20, 18, 17}}, {'L', {16, 16, 16, 16, 16, 16, 31}},
    {'M', {17, 27, 21, 21, 17, 17, 17}}, {'N', {17, 25, 21, 21, 19, 17, 17}},
    {'O', {14, 17, 17, 17, 17, 17, 14}}, {'P', {30, 17, 17, 30, 16, 16, 16}},
    {'Q', {14, 17, 17, 17, 21, 18, 13}}, {'R', {30, 17, 17, 30, 20, 18, 17}},
    {'S', {15, 16, 16, 14, 1, 1, 30}},   {'T', {31, 4, 4, 4, 4, 4, 4}},
    {'U', {17, 17, 17, 17, 17, 17, 14}}, {'V', {17, 17, 17, 17, 10, 10, 4}},
    {'W', {17, 17, 17, 21, 21, 27, 17}}, {'X', {17, 17, 10, 4, 10, 17, 17}},
    {'Y', {17, 17, 10, 4, 4, 4, 4}},     {'Z', {31, 1, 2, 4, 8, 16, 31}},
    {':', {0, 4, 0, 0, 0, 4, 0}},        {'.', {0, 0, 0, 0, 0, 12, 12}},
    {'/', {1, 1, 2, 4, 8, 16, 16}},      {'-', {0, 0, 0, 14, 0, 0, 0}},
    {'+', {0, 4, 4, 31, 4, 4, 0}},       {'%', {25, 25, 2, 4, 8, 19, 19}},
    {'!', {4, 4, 4, 4, 4, 0, 4}},        {'>', {8, 4, 2, 1, 2, 4, 8}},
    {'<', {2, 4, 8, 16, 8, 4, 2}},       {'*', {0, 21, 14, 31, 14, 21, 0}}};

}  // namespace

GLuint makeFontTexture() {
    constexpr int kWidth = kFontColumns * kCell;
    std::vector<GLubyte> dots(static_cast<size_t>(kWidth * kCell), 0);
    for (const Letter& letter : kLetters) {
        for (int y = 0; y < kLetterHeight; ++y) {
            for (int x = 0; x < kLetterWidth; ++x) {
                if ((letter.rows[y] >> (kLetterWidth - 1 - x) & 1) != 0) {
                    dots[static_cast<size_t>(y * kWidth + fontCell(letter.c) * kCell + x)] = 255;
                }
            }
        }
    }
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexStorage2D(GL_TEXTURE_2D, 1, GL_R8, kWidth, kCell);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, kWidth, kCell, GL_RED, GL_UNSIGNED_BYTE, dots.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    return texture;
}

int fontCell(char c) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return c >= ' ' && c < ' ' + kFontColumns ? c - ' ' : 0;
}

}  // namespace scene
