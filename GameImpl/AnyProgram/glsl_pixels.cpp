#include "GameImpl/AnyProgram/glsl_pixels.h"

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

// Names, numbers and single characters, without comments and blanks.
class Tokens {
public:
    explicit Tokens(std::string_view source) : text(source) {
        while (at < text.size()) step();
    }

    std::vector<Token> all;
    // Where a declaration can stand: in front of the first token outside of any
    // directive, or of the #if around it.
    size_t firstDeclaration = std::string_view::npos;
    bool isBeforeDirective = false;

private:
    void step() {
        const char c = text[at];
        if (c == '\n') {
            lineIsBlank = true;
            inDirective = false;
            ++at;
        } else if (c == '\\' && next() == '\n') {
            at += 2;  // the line goes on
        } else if (isBlank(c)) {
            ++at;
        } else if (c == '/' && next() == '/') {
            while (at < text.size() && text[at] != '\n') at += text[at] == '\\' ? 2 : 1;
        } else if (c == '/' && next() == '*') {
            const size_t end = text.find("*/", at + 2);
            at = end == std::string_view::npos ? text.size() : end + 2;
        } else {
            token(c);
        }
    }

    void token(char c) {
        if (c == '#' && lineIsBlank) beginDirective();
        lineIsBlank = false;
        const size_t begin = at++;
        if (startsName(c) || isDigit(c)) {
            while (at < text.size() && (startsName(text[at]) || isDigit(text[at]))) ++at;
        }
        if (!inDirective && firstDeclaration == std::string_view::npos) {
            isBeforeDirective = depth > 0;
            firstDeclaration = isBeforeDirective ? outermostIf : begin;
        }
        all.push_back({begin, at, inDirective});
    }

    void beginDirective() {
        inDirective = true;
        size_t name = at + 1;
        while (name < text.size() && isBlank(text[name])) ++name;
        const std::string_view rest = text.substr(name);
        if (rest.substr(0, 2) == "if") {
            if (depth++ == 0) outermostIf = at;
        } else if (rest.substr(0, 5) == "endif" && depth > 0) {
            --depth;
        }
    }

    char next() const { return at + 1 < text.size() ? text[at + 1] : '\0'; }

    std::string_view text;
    size_t at = 0;
    bool lineIsBlank = true;
    bool inDirective = false;
    int depth = 0;
    size_t outermostIf = 0;
};

struct Replacement {
    std::string_view name;
    std::string with;
};

class Rewriter {
public:
    explicit Rewriter(std::string_view source) : text(source), tokens(source) {}

    bool uses(std::string_view name) const {
        for (const Token& token : tokens.all) {
            if (isName(token, name)) return true;
        }
        return false;
    }

    bool hasText() const { return tokens.firstDeclaration != std::string_view::npos; }

    // Declared again, it would not be an expression there.
    bool declares(std::string_view name) const {
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

    std::string rewritten(const Replacement& replacement, const std::string& first,
                          const std::string& last) const {
        std::string result;
        size_t copied = 0;
        const auto copyTo = [&](size_t end) {
            result.append(text.substr(copied, end - copied));
            copied = end;
        };
        bool isDeclared = false;
        for (const Token& token : tokens.all) {
            if (!isDeclared && token.begin >= tokens.firstDeclaration) {
                copyTo(tokens.firstDeclaration);
                result += first;
                if (tokens.isBeforeDirective && !first.empty()) result += '\n';
                isDeclared = true;
            }
            if (!isName(token, replacement.name)) continue;
            copyTo(token.begin);
            result += replacement.with;
            copied = token.end;
        }
        copyTo(text.size());
        return result + last;
    }

private:
    std::string_view view(const Token& token) const {
        return text.substr(token.begin, token.end - token.begin);
    }
    bool isName(const Token& token, std::string_view name) const { return view(token) == name; }

    std::string_view text;
    Tokens tokens;
};

}  // namespace

// The uniforms come last in the text: where the driver counts in that order, those of
// the program keep their locations and need no translation.
std::optional<std::string> inWindowPixels(std::string_view text, unsigned kind,
                                          const char* precision) {
    const Rewriter shader(text);
    if (!shader.hasText()) return std::nullopt;
    const std::string scalar = std::string("uniform ") + precision + " float " + kPointScale + ";";
    const std::string scaled = std::string("gl_PointSize*=1.0+") + kPointScale;
    switch (kind) {
        case GL_FRAGMENT_SHADER: {
            constexpr char kName[] = "gl_FragCoord";
            if (!shader.uses(kName) || shader.declares(kName)) return std::nullopt;
            const std::string function = std::string(precision) + " vec4 vsk_fragCoord()";
            return shader.rewritten({kName, "vsk_fragCoord()"}, function + ";",
                                    std::string("\nuniform ") + precision + " vec2 " +
                                        kFragmentScale + ";" + function +
                                        "{return vec4(gl_FragCoord.xy*(1.0+" + kFragmentScale +
                                        "),gl_FragCoord.zw);}\n");
        }
        case GL_VERTEX_SHADER:
        case GL_TESS_EVALUATION_SHADER:
            if (!shader.uses("gl_PointSize")) return std::nullopt;
            return shader.rewritten({"main", "vsk_main"}, "",
                                    "\n" + scalar + "void main(){vsk_main();" + scaled + ";}\n");
        case GL_GEOMETRY_SHADER:
            if (!shader.uses("gl_PointSize")) return std::nullopt;
            return shader.rewritten({"EmitVertex", scaled + ",EmitVertex"}, scalar, "");
        default:
            return std::nullopt;
    }
}

}  // namespace android::any
