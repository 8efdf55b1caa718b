// The converters of single values, one against another or against the C library's; and a value for
// any key: loaded twice as once, and loaded when it has been checked.
//
// Input: a line that is passed over, two bounds and the number of a key, each on its line, and the
// value.
#include "answer/check_config.h"
#include "answer/get_vals.h"
#include "catalogue/reset.h"
#include "catalogue/settings.h"
#include "kinds/kinds.h"
#include "kinds/loading.h"
#include "support.h"
#include "value/convert.h"

#include <charconv>

using namespace ov;
using namespace ov::fuzz;

namespace {

void check_sizes(const std::string& text) {
    constexpr std::int64_t LongestPrinted = std::int64_t{999999999} << 30; // in nine digits
    require(conv_byte(text, 'K') >= -1, "a size");
    MaxMessageSize = conv_byte(text, 'K');
    if (MaxMessageSize >= 0 && MaxMessageSize < LongestPrinted) {
        const std::string printed = get_vals("/dev/null", "SMTP", "MaxMessageSize", 1).value();
        require_equal(conv_byte(printed, 'B'), MaxMessageSize, "a size that was printed");
    }
}

void check_numbers(const std::string& text, std::int64_t low, std::int64_t high) {
    std::int64_t number = 0;
    const bool digits =
        std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc() &&
        text.find_first_not_of("0123456789") == text.npos;
    const bool within = digits && number >= low && number <= high;
    require(decimal_within(text, low, high) == (within ? std::optional(number) : std::nullopt),
            "a number within bounds");
}

bool check_key(const Row& row, const std::string& text) {
    const Kind* kind = &kind_of(row.load);
    const Manner& manner = manner_of(row.load);
    const char* key = key_of(row);
    const bool is_number = kind == &kinds::Digits || kind == &kinds::Integer;
    const Variable setting = variable_of(row);
    const bool accepted = check_config(section_of(row), key, text.c_str()) == 0;
    Load load{.file = "file", .mask = 0xff | RC_NOCHECK | RC_NODIRCHECK};
    const Loading loading{{manner, setting, text}, load, MainReader, section_of(row), 0};
    const std::string before = shown(setting);
    const bool taken = kind->load(loading) == Verdict::Taken;
    const std::string once = shown(setting);
    const auto* number_setting = std::get_if<Number>(&setting);
    const std::int64_t number = number_setting ? kinds::number_in(*number_setting) : 0;
    if (taken) {
        require(kind->load(loading) == Verdict::Taken && shown(setting) == once, key);
        require(!is_number ||
                    std::holds_alternative<unsigned*>(*number_setting) || // which may wrap
                    (number >= manner.lowest && number <= manner.highest),
                key);
    } else if (is_number) {
        require_equal(once, before, key);
    }
    // Numbers with base prefixes, which are checked as such, are loaded without. In a network with
    // a mask, a part that begins with a 0 is checked as decimal and loaded as octal. Any list of
    // servers passes the check, and eight of them are loaded.
    require(!accepted || taken || text.empty() || kind == &kinds::Integer ||
                kind == &kinds::Integer64 || kind == &kinds::UserGroup ||
                (is_number && text.size() > 9) ||
                (kind == &kinds::IpConditionList && text.find('/') != text.npos),
            key);
    return taken;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    input.line();
    const unsigned low = input.number();
    const unsigned high = input.number();
    const Row& row = catalogue()[input.number() % catalogue().size()];
    const std::string rest = input.rest();
    const std::string text(c_text(rest).substr(0, MaxText));

    reset_settings();
    check_sizes(text);
    check_numbers(text, low, high);
    check_key(row, text);
    if (&kind_of(row.load) == &kinds::Within) {
        const auto limit = [&](const Other& key) { return std::to_string(kinds::bound_in(key)); };
        require(check_key(row, limit(manner_of(row.load).first)), "the lowest value");
        require(check_key(row, limit(manner_of(row.load).second)), "the highest value");
    }
    return 0;
}
