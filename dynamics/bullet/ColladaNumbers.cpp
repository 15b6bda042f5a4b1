#include <dynamics/bullet/ColladaNumbers.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

namespace tessarin::dynamics::bullet::collada {

namespace {

constexpr std::string_view space = " \t\r\n";

std::string lowerCase(std::string_view text) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return result;
}

} // namespace

void NumberReader::skipSpace() {
    text.remove_prefix(std::min(text.find_first_not_of(space), text.size()));
}

template <typename Number>
bool NumberReader::read(Number& number) {
    skipSpace();
    const bool isSigned = text.size() > 1 && text[0] == '+' && text[1] != '-';
    const char* const begin = text.data() + (isSigned ? 1 : 0);
    const char* const end = text.data() + text.size();
    Number value{};
    auto [behind, error] = std::from_chars(begin, end, value);
    if (error == std::errc::result_out_of_range) {
        value = 0; // too small; one that is too large is as useless as text
        if constexpr (std::is_same_v<Number, double>) {
            const std::string_view digits(begin, static_cast<std::size_t>(behind - begin));
            const std::size_t exponent = digits.find_first_of("eE");
            if (exponent == std::string_view::npos || digits.substr(exponent + 1, 1) != "-") {
                value = digits[0] == '-' ? -HUGE_VAL : HUGE_VAL;
            }
        }
    } else if (error != std::errc()) {
        return false;
    }
    std::string_view rest(behind, static_cast<std::size_t>(end - behind));
    if (rest.substr(0, 1) == "," && (rest.size() == 1 || space.find(rest[1]) != std::string_view::npos)) {
        rest.remove_prefix(1);
    }
    if (!rest.empty() && space.find(rest[0]) == std::string_view::npos) {
        return false;
    }
    number = value;
    text = rest;
    return true;
}

bool NumberReader::next(double& number) {
    return read(number);
}

bool NumberReader::next(long& number) {
    return read(number);
}

bool NumberReader::atEnd() {
    skipSpace();
    return text.empty();
}

template <std::size_t count>
bool readNumbers(std::string_view text, std::array<double, count>& numbers) {
    NumberReader reader(text);
    std::array<double, count> values{};
    for (double& value : values) {
        if (!reader.next(value) || !std::isfinite(value)) {
            return false;
        }
    }
    if (!reader.atEnd()) {
        return false;
    }
    numbers = values;
    return true;
}

template bool readNumbers(std::string_view, std::array<double, 1>&);
template bool readNumbers(std::string_view, std::array<double, 2>&);
template bool readNumbers(std::string_view, std::array<double, 3>&);
template bool readNumbers(std::string_view, std::array<double, 4>&);
template bool readNumbers(std::string_view, std::array<double, 7>&);
template bool readNumbers(std::string_view, std::array<double, 9>&);
template bool readNumbers(std::string_view, std::array<double, 16>&);

bool readLimitNumbers(std::string_view text, std::array<double, 3>& numbers) {
    std::array<double, 3> values{};
    std::string_view rest = trimmed(text);
    for (double& value : values) {
        std::string word(rest.substr(0, rest.find_first_of(space)));
        rest = trimmed(rest.substr(word.size()));
        NumberReader reader(word);
        if (!reader.next(value) || !reader.atEnd() || std::isnan(value)) {
            // "1.#INF" and the like.
            word = lowerCase(word);
            if (word.find("inf") == std::string::npos) {
                return false;
            }
            value = word[0] == '-' ? -HUGE_VAL : HUGE_VAL;
        }
    }
    if (!rest.empty()) {
        return false;
    }
    numbers = values;
    return true;
}

std::optional<bool> readBool(std::string_view text) {
    const std::string word = lowerCase(trimmed(text));
    if (word == "true" || word == "1") {
        return true;
    }
    return word == "false" || word == "0" ? std::optional<bool>(false) : std::nullopt;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(space);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(space) - first + 1);
}

} // namespace tessarin::dynamics::bullet::collada
