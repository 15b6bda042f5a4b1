#pragma once

#include <agent/Export.h>

#include <gmtl/Quat.h>
#include <gmtl/Vec.h>

#include <charconv>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

namespace tessarin::agent {

/// The text form of a field's type, as documents hold it. Accessor<T> works for each type for which this is
/// specialised: text, bool ("true" or "false"), the arithmetic types (a character is its number), and GMTL's vectors
/// and quaternions (numbers joined by blanks). Numbers take no notice of locales and have digits enough to come back
/// equal.
///
/// A host adds a type of its own by specialising the template with two static functions:
/// @code
/// template <>
/// struct tessarin::agent::FieldText<Colour> {
///     static std::string write(const Colour& value);
///     static bool read(std::string_view text, Colour& value); // false, and value untouched, if text is no colour
///     static std::string expected(); // may be left out: what a text should be, as in "a colour like #ff8000"
/// };
/// @endcode
template <class T, class Enable = void>
struct FieldText;

template <>
struct FieldText<std::string> {
    static std::string write(const std::string& value) { return value; }

    static bool read(std::string_view text, std::string& value) {
        value = text;
        return true;
    }
};

namespace detail {

template <class T>
constexpr bool isWideCharacter = std::is_same_v<T, wchar_t> || std::is_same_v<T, char16_t> ||
#ifdef __cpp_char8_t
                                 std::is_same_v<T, char8_t> ||
#endif
                                 std::is_same_v<T, char32_t>;

/// The type in which a number is converted: the standard library's conversions leave out these types of characters.
template <class Number, bool = isWideCharacter<Number>>
struct Converted {
    using Type = Number;
};

template <class Character>
struct Converted<Character, true> {
    using Type = typename std::conditional_t<std::is_signed_v<Character>, std::make_signed<Character>,
                                             std::make_unsigned<Character>>::type;
};

constexpr std::string_view fieldBlanks = " \t\r\n";

/// Cuts the next word off the front of the text; empty when there is none.
inline std::string_view nextWord(std::string_view& text) {
    const std::size_t begin = text.find_first_not_of(fieldBlanks);
    if (begin == std::string_view::npos) {
        text = {};
        return {};
    }
    const std::size_t end = text.find_first_of(fieldBlanks, begin);
    const std::string_view word = text.substr(begin, end - begin);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end);
    return word;
}

/// Reads a number that is too near to zero to have all its digits. Some standard libraries' std::from_chars refuses
/// such a long double; zero and what overflows are refused here too.
TESSARIN_AGENT_EXPORT bool readDenormal(std::string_view word, long double& value);

template <class Number>
bool readNumber(std::string_view word, Number& value) {
    if (word.size() > 1 && word[0] == '+' && word[1] != '-')
        word.remove_prefix(1);
    typename Converted<Number>::Type number{};
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, number);
    if constexpr (std::is_same_v<Number, long double>) {
        if (error == std::errc::result_out_of_range && stop == end)
            return readDenormal(word, value);
    }
    if (error != std::errc() || stop != end)
        return false;
    value = static_cast<Number>(number);
    return true;
}

template <class Number>
void appendNumber(std::string& text, Number value) {
    char buffer[64];
    const auto [end, error] =
        std::to_chars(buffer, buffer + sizeof buffer, static_cast<typename Converted<Number>::Type>(value));
    if (error == std::errc())
        text.append(buffer, end);
}

/// "a number", or "a whole number from -128 to 127".
template <class Number>
std::string expectedNumber() {
    if constexpr (std::is_integral_v<Number>) {
        std::string text = "a whole number from ";
        appendNumber(text, std::numeric_limits<Number>::min());
        text += " to ";
        appendNumber(text, std::numeric_limits<Number>::max());
        return text;
    } else {
        return "a number";
    }
}

/// "three numbers separated by blanks".
TESSARIN_AGENT_EXPORT std::string expectedNumbers(std::size_t count, bool areWhole);

template <class Index, class Numbers>
std::string writeNumbers(const Numbers& values, Index count) {
    std::string text;
    for (Index i = 0; i < count; ++i) {
        if (i > 0)
            text += ' ';
        appendNumber(text, values[i]);
    }
    return text;
}

template <class Index, class Numbers>
bool readNumbers(std::string_view text, Numbers& values, Index count) {
    Numbers read = values;
    for (Index i = 0; i < count; ++i)
        if (!readNumber(nextWord(text), read[i]))
            return false;
    if (!nextWord(text).empty())
        return false;
    values = read;
    return true;
}

} // namespace detail

template <>
struct FieldText<bool> {
    static std::string write(bool value) { return value ? "true" : "false"; }

    static bool read(std::string_view text, bool& value) {
        const std::string_view word = detail::nextWord(text);
        const bool yes = word == "true" || word == "1";
        if ((!yes && word != "false" && word != "0") || !detail::nextWord(text).empty())
            return false;
        value = yes;
        return true;
    }

    static std::string expected() { return "true or false"; }
};

template <class Number>
struct FieldText<Number, std::enable_if_t<std::is_arithmetic_v<Number>>> {
    static std::string write(Number value) {
        std::string text;
        detail::appendNumber(text, value);
        return text;
    }

    static bool read(std::string_view text, Number& value) {
        const std::string_view word = detail::nextWord(text);
        return detail::nextWord(text).empty() && detail::readNumber(word, value);
    }

    static std::string expected() { return detail::expectedNumber<Number>(); }
};

template <class Number, unsigned Size>
struct FieldText<gmtl::Vec<Number, Size>> {
    static std::string write(const gmtl::Vec<Number, Size>& value) { return detail::writeNumbers(value, Size); }
    static bool read(std::string_view text, gmtl::Vec<Number, Size>& value) {
        return detail::readNumbers(text, value, Size);
    }
    static std::string expected() { return detail::expectedNumbers(Size, std::is_integral_v<Number>); }
};

template <class Number>
struct FieldText<gmtl::Quat<Number>> {
    static std::string write(const gmtl::Quat<Number>& value) { return detail::writeNumbers(value, 4); }
    static bool read(std::string_view text, gmtl::Quat<Number>& value) { return detail::readNumbers(text, value, 4); }
    static std::string expected() { return detail::expectedNumbers(4, false); }
};

namespace detail {

template <class T, class = void>
struct SaysWhatItExpects : std::false_type {};

template <class T>
struct SaysWhatItExpects<T, std::void_t<decltype(FieldText<T>::expected())>> : std::true_type {};

} // namespace detail

/// What the text of a field of type T should be, for messages.
template <class T>
std::string expectedText() {
    if constexpr (detail::SaysWhatItExpects<T>::value)
        return FieldText<T>::expected();
    else
        return "a value of the field's type";
}

} // namespace tessarin::agent
