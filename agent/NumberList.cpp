#include <agent/NumberList.h>

#include <charconv>
#include <limits>
#include <locale>
#include <sstream>
#include <string_view>

namespace tessarin::agent {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// Too small for a double reads as zero, too large as no number; std::from_chars doesn't say which it was.
double readExtreme(std::string_view token) {
    std::istringstream stream{std::string(token)};
    stream.imbue(std::locale::classic());
    double number = 0.0;
    return stream >> number ? number : notANumber;
}

double readToken(std::string_view token) {
    const std::size_t begin = token.find_first_not_of("\t\n\v\f\r");
    if (begin == std::string_view::npos)
        return notANumber;
    token.remove_prefix(begin);
    const std::size_t sign = token[0] == '-' || token[0] == '+' ? 1 : 0;
    // Infinities and other words that std::from_chars knows are no numbers of a document.
    if (token.size() <= sign || std::string_view("0123456789.").find(token[sign]) == std::string_view::npos)
        return notANumber;
    if (token[0] == '+')
        token.remove_prefix(1);
    double number = 0.0;
    const auto [stop, error] = std::from_chars(token.data(), token.data() + token.size(), number);
    if (error == std::errc::result_out_of_range)
        return readExtreme(token.substr(0, static_cast<std::size_t>(stop - token.data())));
    return error == std::errc() ? number : notANumber;
}

} // namespace

std::vector<double> readNumberList(const std::string& text) {
    std::vector<double> numbers;
    std::string_view rest(text);
    for (;;) {
        const std::size_t begin = rest.find_first_not_of(' ');
        if (begin == std::string_view::npos)
            return numbers;
        const std::size_t end = rest.find(' ', begin);
        numbers.push_back(readToken(rest.substr(begin, end - begin)));
        if (end == std::string_view::npos)
            return numbers;
        rest.remove_prefix(end);
    }
}

std::string writeNumberList(const double* numbers, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        char buffer[32];
        const auto [end, error] =
            std::to_chars(buffer, buffer + sizeof buffer, numbers[i], std::chars_format::general, 6);
        if (i > 0)
            text += ' ';
        if (error == std::errc())
            text.append(buffer, end);
    }
    return text;
}

} // namespace tessarin::agent
