#include "GameImpl/AnyProgram/glsl_pixels.h"

#include <algorithm>
#include <vector>

#include "platform/loader/gl_constants.h"

namespace android::any {

namespace {

bool startsName(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

struct Token {
    size_t begin, end;
    bool inDirective;
};

// Names, numbers and single characters, without comments and blanks, and the place for a
// declaration that what uses `name` needs: the last one before its first use, since no
// #extension may follow a declaration.
class Tokens {
public:
    Tokens(std::string_view source, std::string_view usedName) : text(source), name(usedName) {
        while (at < text.size()) step();
    }

    std::vector<Token> all;
    size_t place = std::string_view::npos;
    bool isBeforeDirective = false;  // an #if around the next declaration

private:
    void step() {
        const char c = text[at];
        if (c == '\n') {
            lineIsBlank = true;
            inDirective = false;
            ++at;
        } else if (const size_t length = continuation(); length != 0) {
            at += length;
        } else if (isBlank(c)) {
            ++at;
        } else if (c == '/' && next() == '/') {
            while (at < text.size() && text[at] != '\n') at += std::max<size_t>(continuation(), 1);
        } else if (c == '/' && next() == '*') {
            const size_t end = text.find("*/", at + 2);
            at = end == std::string_view::npos ? text.size() : end + 2;
        } else {
            token(c);
        }
    }

    // Of a backslash and the line's end after it, in the text of any system; else 0.
    size_t continuation() const {
        if (text[at] != '\\') return 0;
        if (next() == '\n') return 2;
        return text.substr(at + 1, 2) == "\r\n" ? 3 : 0;
    }

    void token(char c) {
        if (c == '#' && lineIsBlank) beginDirective();
        lineIsBlank = false;
        const size_t begin = at++;
        if (startsName(c) || isDigit(c)) {
            while (at < text.size() && (startsName(text[at]) || isDigit(text[at]))) ++at;
        }
        nameIsUsed = nameIsUsed || text.substr(begin, at - begin) == name;
        if (!inDirective) {
            if (isBetween && (!nameIsUsed || place == std::string_view::npos)) setPlace(begin);
            follow(c);
        }
        all.push_back({begin, at, inDirective});
    }

    void setPlace(size_t begin) {
        if (depth > 0 && !ifIsBetween && !ifHasExtension) return;
        isBeforeDirective = depth > 0 && !ifHasExtension;
        place = isBeforeDirective ? outermostIf : begin;
    }

    // Whether the next token begins a declaration. Where branches of an #if open and close
    // different blocks, none is taken for one any more.
    void follow(char c) {
        isBetween = c == ';' && blocks == 0;
        if (c == '{' && blocks++ == 0) blockIsFunction = last == ')';
        if (c == '}') isBetween = --blocks == 0 && blockIsFunction;
        if (blocks < 0) blocks = kNeverBetween;
        last = c;
    }

    void beginDirective() {
        inDirective = true;
        size_t word = at + 1;
        while (word < text.size() && isBlank(text[word])) ++word;
        const std::string_view rest = text.substr(word);
        const auto is = [&](std::string_view directive) {
            return rest.substr(0, directive.size()) == directive;
        };
        if (is("if") && depth++ == 0) {
            outermostIf = at;
            ifIsBetween = isBetween;
            ifHasExtension = false;
        }
        if (is("endif") && depth > 0) --depth;
        ifHasExtension = ifHasExtension || is("extension");
    }

    char next() const { return at + 1 < text.size() ? text[at + 1] : '\0'; }

    static constexpr int kNeverBetween = 1 << 20;

    std::string_view text;
    std::string_view name;
    size_t at = 0;
    bool lineIsBlank = true;
    bool inDirective = false;
    bool nameIsUsed = false;

    bool isBetween = true;  // declarations
    char last = 0;
    int blocks = 0;
    bool blockIsFunction = false;

    int depth = 0;  // of #if
    size_t outermostIf = 0;
    bool ifIsBetween = false;
    bool ifHasExtension = false;
};

class Rewriter {
public:
    Rewriter(std::string_view source, std::string_view replaced)
        : text(source), name(replaced), tokens(source, replaced) {}

    bool uses(std::string_view other) const {
        return std::any_of(tokens.all.begin(), tokens.all.end(),
                           [&](const Token& token) { return isName(token, other); });
    }

    // Declared again, it would not be an expression there.
    bool declaresIt() const {
        for (size_t i = 1; i < tokens.all.size(); ++i) {
            if (!isName(tokens.all[i], name)) continue;
            const char before = text[tokens.all[i - 1].end - 1];
            const std::string_view word = view(tokens.all[i - 1]);
            if ((startsName(before) || isDigit(before)) && word != "return" && word != "else" &&
                word != "in") {
                if (!tokens.all[i].inDirective) return true;
            }
        }
        return false;
    }

    // With `first` declared before `name`, which gives way to `with`, and `last` at the end.
    std::string rewritten(const std::string& with, const std::string& first,
                          const std::string& last) const {
        std::string result;
        size_t copied = 0;
        const auto copyTo = [&](size_t end) {
            result.append(text.substr(copied, end - copied));
            copied = end;
        };
        bool isDeclared = false;
        for (const Token& token : tokens.all) {
            if (!isDeclared && token.begin >= tokens.place) {
                copyTo(tokens.place);
                result += first;
                if (tokens.isBeforeDirective && !first.empty()) result += '\n';
                isDeclared = true;
            }
            if (!isName(token, name)) continue;
            copyTo(token.begin);
            result += with;
            copied = token.end;
        }
        copyTo(text.size());
        return result + last;
    }

private:
    std::string_view view(const Token& token) const {
        return text.substr(token.begin, token.end - token.begin);
    }
    bool isName(const Token& token, std::string_view other) const { return view(token) == other; }

    std::string_view text;
    std::string_view name;
    Tokens tokens;
};

}  // namespace

// The uniforms come last in the text: where the driver counts in that order, those of
// the program keep their locations and need no translation.
std::optional<std::string> inWindowPixels(std::string_view text, unsigned kind,
                                          const char* precision) {
    const std::string uniform = std::string("uniform ") + precision;
    const std::string scalar = uniform + " float " + kPointScale + ";";
    const std::string scaled = std::string("gl_PointSize*=1.0+") + kPointScale;
    switch (kind) {
        case GL_FRAGMENT_SHADER: {
            const Rewriter shader(text, "gl_FragCoord");
            if (!shader.uses("gl_FragCoord") || shader.declaresIt()) return std::nullopt;
            const std::string function = std::string(precision) + " vec4 vsk_fragCoord()";
            return shader.rewritten("vsk_fragCoord()", function + ";",
                                    "\n" + uniform + " vec2 " + kFragmentScale + ";" + function +
                                        "{return vec4(gl_FragCoord.xy*(1.0+" + kFragmentScale +
                                        "),gl_FragCoord.zw);}\n");
        }
        case GL_VERTEX_SHADER:
        case GL_TESS_EVALUATION_SHADER: {
            const Rewriter shader(text, "main");
            if (!shader.uses("gl_PointSize")) return std::nullopt;
            return shader.rewritten("vsk_main", "",
                                    "\n" + scalar + "void main(){vsk_main();" + scaled + ";}\n");
        }
        case GL_GEOMETRY_SHADER: {
            const Rewriter shader(text, "EmitVertex");
            if (!shader.uses("gl_PointSize")) return std::nullopt;
            return shader.rewritten(scaled + ",EmitVertex", scalar, "");
        }
        default:
            return std::nullopt;
    }
}

}  // namespace android::any
