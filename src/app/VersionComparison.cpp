#include "app/VersionComparison.h"

#include <algorithm>
#include <variant>
#include <vector>

namespace gf {

namespace {

struct Number {
    QString digits;  // without leading zeros; empty for zero
};
struct Word {
    QString text;
};
using Token = std::variant<Number, Word>;

Number numberFrom(QString digits) {
    while (digits.startsWith(QLatin1Char('0'))) {
        digits.remove(0, 1);
    }
    return Number{std::move(digits)};
}

// Digits and letters form tokens; anything else only separates them.
std::vector<Token> tokenize(const QString& version) {
    std::vector<Token> tokens;
    QString run;
    bool runIsDigits = false;
    auto flush = [&] {
        if (!run.isEmpty()) {
            tokens.push_back(runIsDigits ? Token{numberFrom(run)} : Token{Word{run.toLower()}});
            run.clear();
        }
    };
    for (const QChar c : version) {
        const bool digit = c >= QLatin1Char('0') && c <= QLatin1Char('9');
        if (!digit && !c.isLetter()) {
            flush();
            continue;
        }
        if (!run.isEmpty() && digit != runIsDigits) {
            flush();
        }
        runIsDigits = digit;
        run.append(c);
    }
    flush();
    return tokens;
}

int compareNumbers(const Number& a, const Number& b) {
    if (a.digits.size() != b.digits.size()) {
        return a.digits.size() < b.digits.size() ? -1 : 1;
    }
    return a.digits.compare(b.digits);
}

int sign(int value) {
    return (value > 0) - (value < 0);
}

int compareTokens(const Token& a, const Token& b) {
    const auto* numberA = std::get_if<Number>(&a);
    const auto* numberB = std::get_if<Number>(&b);
    if (numberA != nullptr && numberB != nullptr) {
        return sign(compareNumbers(*numberA, *numberB));
    }
    if (numberA == nullptr && numberB == nullptr) {
        return sign(std::get<Word>(a).text.compare(std::get<Word>(b).text));
    }
    // A number where the other has a word: the word is a pre-release of it.
    return numberA != nullptr ? 1 : -1;
}

}  // namespace

int compareVersions(const QString& a, const QString& b) {
    std::vector<Token> left = tokenize(a);
    std::vector<Token> right = tokenize(b);
    const std::size_t length = std::max(left.size(), right.size());
    left.resize(length, Number{});
    right.resize(length, Number{});
    for (std::size_t i = 0; i < length; ++i) {
        if (const int order = compareTokens(left[i], right[i]); order != 0) {
            return order;
        }
    }
    return 0;
}

}  // namespace gf
