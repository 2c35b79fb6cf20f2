#include <ko/filesystem/time.hpp>

#include <cstdint>

#include <ko/filesystem/exceptions/throw.hpp>
#include <ko/filesystem/posix/status_reader.hpp>

namespace ko::filesystem {

namespace {

using boost::posix_time::ptime;
using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::system_clock;

}  // namespace

system_clock::time_point to_time_point(ptime const& time) {
    // Rounded towards zero, so that these are inside.
    constexpr auto first = duration_cast<microseconds>(system_clock::duration::min());
    constexpr auto last = duration_cast<microseconds>(system_clock::duration::max());
    microseconds::rep count = 0;
    bool const overflow =
        time.is_special() || __builtin_sub_overflow(detail::julian_microseconds(time),
                                                    detail::julian_microseconds_of_epoch, &count);
    if (overflow || count < first.count() || count > last.count())
        detail::throw_invalid_argument("Time not valid");
    return system_clock::time_point(microseconds(count));
}

ptime to_ptime(system_clock::time_point time) {
    auto const count = std::chrono::floor<microseconds>(time.time_since_epoch()).count();
    ptime const result = detail::ptime_of(count);
    if (result.is_special()) detail::throw_invalid_argument("Time not valid");
    return result;
}

}  // namespace ko::filesystem
