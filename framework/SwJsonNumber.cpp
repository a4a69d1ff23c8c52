// Numbers of the JSON reader by the plain way: every form, with the exact place of a problem. What is common is
// read in sw_json_number.h.
#include "sw_json_number.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace sw_detail {

namespace {

/// The product of two 64-bit numbers.
__extension__ using Uint128 = unsigned __int128;

/// Steps over the digits at `at`, of which there has to be one.
bool skipDigits(char const*& at, std::string_view message, JsonProblem& problem)
{
    if (!isDigit(*at)) {
        problem = {at, message};
        return false;
    }
    while (isDigit(*at)) {
        ++at;
    }
    return true;
}

/// The token [start, end) by the rules of strtod: false on a range error, in either direction.
bool doubleOfToken(char const* start, char const* end, double& result)
{
    std::from_chars_result const read = std::from_chars(start, end, result);
    // Both round to the nearest double, so they agree on every normal number. Which tiny numbers are range
    // errors is for strtod alone to say.
    if (read.ec == std::errc() && read.ptr == end && std::abs(result) > std::numeric_limits<double>::min()) {
        return true;
    }
    char* stop = nullptr;
    errno = 0;
    result = strtod_l(start, &stop, classicLocale());
    return stop == end && errno != ERANGE;
}

}  // namespace

double nearestQuotient(std::uint64_t numerator, std::ptrdiff_t digits)
{
    std::uint64_t divisor = 1;
    for (; digits > 0; --digits) {
        divisor *= 10U;
    }
    // Both with their top bits set, the quotient of whole numbers has 63 or 64 digits, ten more than a double;
    // what is left over matters only as being there, which the last digit tells.
    int const numeratorShift = std::countl_zero(numerator);
    int const divisorShift = std::countl_zero(divisor);
    divisor <<= static_cast<unsigned>(divisorShift);
    Uint128 const dividend = static_cast<Uint128>(numerator << static_cast<unsigned>(numeratorShift)) << 63U;
    auto quotient = static_cast<std::uint64_t>(dividend / divisor);
    quotient |= static_cast<Uint128>(quotient) * divisor != dividend ? 1U : 0U;
    return std::ldexp(static_cast<double>(quotient), divisorShift - numeratorShift - 63);
}

bool scanAnyNumber(char const*& at, JsonNumber& number, JsonProblem& problem)
{
    char const* const start = at;
    at += *at == '-' ? 1 : 0;
    if (*at == '0' && isDigit(at[1])) {
        ++at;
        problem = {at, "Leading zeros are not allowed in JSON numbers"};
        return false;
    }
    if (!skipDigits(at, "Expected digit in number literal", problem)) {
        return false;
    }
    number.isDouble = *at == '.' || *at == 'e' || *at == 'E';
    if (*at == '.' && !skipDigits(++at, "Expected digit after decimal point", problem)) {
        return false;
    }
    if (*at == 'e' || *at == 'E') {
        ++at;
        at += *at == '-' || *at == '+' ? 1 : 0;
        if (!skipDigits(at, "Expected digit in exponent", problem)) {
            return false;
        }
    }
    if (number.isDouble) {
        problem = {start, "Invalid floating-point number"};
        return doubleOfToken(start, at, number.real);
    }
    problem = {start, "Invalid integer number"};
    return std::from_chars(start, at, number.whole).ec == std::errc();
}

}  // namespace sw_detail
