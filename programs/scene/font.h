// A five by seven dot font with capitals, digits and a few signs. Small letters
// read as capitals; any other character is left blank.
#pragma once

#include <GLES3/gl3.h>

namespace scene {

constexpr int kLetterWidth = 5;
constexpr int kLetterHeight = 7;
// Each letter has a cell of this size in the font's texture, the rest of which
// is empty, so that filtering never reaches a neighbour.
constexpr int kCell = 8;
constexpr int kFontColumns = 64;

// One row of cells, in the order of the characters 32 to 95.
GLuint makeFontTexture();
// The cell of a character.
int fontCell(char c);

}  // namespace scene
