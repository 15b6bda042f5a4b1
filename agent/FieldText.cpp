#include <agent/FieldText.h>

#include <cmath>
#include <iterator>
#include <locale>
#include <sstream>

namespace tessarin::agent::detail {

bool readDenormal(std::string_view word, long double& value) {
    std::istringstream stream{std::string(word)};
    stream.imbue(std::locale::classic());
    long double number = 0.0L;
    if (!(stream >> number) || std::fpclassify(number) != FP_SUBNORMAL)
        return false;
    value = number;
    return true;
}

std::string expectedNumbers(std::size_t count, bool areWhole) {
    static const char* const words[] = {"no", "one", "two", "three", "four"};
    return (count < std::size(words) ? words[count] : std::to_string(count)) +
           (areWhole ? " whole numbers" : " numbers") + " separated by blanks";
}

} // namespace tessarin::agent::detail
