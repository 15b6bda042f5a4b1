#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tessarin::dynamics::bullet::collada {

/// Takes the numbers of an XML list one by one, whatever the locale. A comma behind a number is passed over.
class NumberReader {
public:
    explicit NumberReader(std::string_view listText) : text(listText) {}

    /// False at the end of the list and at anything that is no number, which ends the list.
    bool next(double& number);
    bool next(long& number);

    /// True behind the last number of a list that holds nothing else.
    bool atEnd();

private:
    template <typename Number>
    bool read(Number& number);
    void skipSpace();

    std::string_view text;
};

/// False, with the numbers left as they were, unless the text is a list of exactly that many finite numbers.
template <std::size_t count>
bool readNumbers(std::string_view text, std::array<double, count>& numbers);

extern template bool readNumbers(std::string_view, std::array<double, 1>&);
extern template bool readNumbers(std::string_view, std::array<double, 2>&);
extern template bool readNumbers(std::string_view, std::array<double, 3>&);
extern template bool readNumbers(std::string_view, std::array<double, 4>&);
extern template bool readNumbers(std::string_view, std::array<double, 7>&);
extern template bool readNumbers(std::string_view, std::array<double, 9>&);
extern template bool readNumbers(std::string_view, std::array<double, 16>&);

/// As readNumbers, but numbers may be infinite, however that is spelt.
bool readLimitNumbers(std::string_view text, std::array<double, 3>& numbers);

/// "true" and "1", "false" and "0", whatever the case; everything else is nothing.
std::optional<bool> readBool(std::string_view text);

/// Without the white space around it.
std::string_view trimmed(std::string_view text);

} // namespace tessarin::dynamics::bullet::collada
