#include <agent/FieldText.h>

#include <cmath>
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

} // namespace tessarin::agent::detail
