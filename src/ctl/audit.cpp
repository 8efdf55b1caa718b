#include "ctl/audit.h"

#include "ctl/text.h"

#include <cstdlib>
#include <syslog.h>
#include <unistd.h>

namespace ov::ctl {

namespace {

constexpr std::size_t LongestLine = 900; // which every logger takes whole

// In quotes: what somebody has typed cannot look like more than a value.
std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : printable(shortened(text))) {
        result += c == '"' || c == '\\' ? "\\" : "";
        result += c;
    }
    return result + '"';
}

std::string value_of(const std::optional<std::string>& value, bool is_secret) {
    return !value ? "nothing" : is_secret ? "********" : quoted(*value);
}

std::string in_words(const Difference& change) {
    std::string text = '[' + printable(shortened(change.section)) + ']';
    if (change.key.empty()) {
        return text + " deleted";
    }
    return text + ' ' + printable(shortened(change.key)) + " from " +
           value_of(change.before, change.secret) + " to " + value_of(change.after, change.secret);
}

} // namespace

void audit(const std::string& file, const std::vector<Difference>& changed) {
    const char* sudo = std::getenv("SUDO_USER");
    const std::string who = "uid=" + std::to_string(::getuid()) +
                            (sudo ? " SUDO_USER=" + quoted(sudo) : "") + " file=" + quoted(file) +
                            ": ";
    ::openlog("ov_confctl", LOG_PID, LOG_AUTHPRIV);
    std::string line;
    for (const Difference& change : changed) {
        const std::string words = in_words(change);
        if (!line.empty() && who.size() + line.size() + words.size() > LongestLine) {
            ::syslog(LOG_NOTICE, "%s%s", who.c_str(), line.c_str());
            line.clear();
        }
        line += (line.empty() ? "" : "; ") + words;
    }
    if (!line.empty()) {
        ::syslog(LOG_NOTICE, "%s%s", who.c_str(), line.c_str());
    }
    ::closelog();
}

} // namespace ov::ctl
