#include "ctl/audit.h"

#include "reference/text.h"
#include "util/text.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <syslog.h>
#include <unistd.h>

namespace ov::ctl {

namespace {

constexpr std::size_t LongestLine = 800; // of what has changed: every logger takes it whole

// In quotes: what somebody has typed cannot look like more than a value.
std::string marked(std::string_view text) {
    std::string result = "\"";
    for (const char c : printable(text)) {
        result += c == '"' || c == '\\' ? "\\" : "";
        result += c;
    }
    return result + '"';
}

std::string value_of(const std::optional<std::string>& value, bool is_secret) {
    return !value ? "nothing" : is_secret ? "********" : marked(shortened(*value));
}

// A name: in quotes unless it is made of what names are made of.
std::string named(const std::string& name) {
    return std::all_of(name.begin(), name.end(), is_name_character) ? name
                                                                    : marked(shortened(name));
}

std::string in_words(const Difference& change) {
    std::string text = '[' + named(change.section) + ']';
    if (!change.key) {
        return text + (change.after ? " made" : " deleted");
    }
    return text + ' ' + named(*change.key) + " from " + value_of(change.before, change.secret) +
           " to " + value_of(change.after, change.secret);
}

void log_line(const std::string& file, const std::string& what) {
    const char* sudo = std::getenv("SUDO_USER");
    const std::string who = sudo ? " SUDO_USER=" + marked(sudo) : "";
    std::error_code error;
    const std::string path = std::filesystem::absolute(file, error).string();
    ::openlog("ov_confctl", LOG_PID, LOG_AUTHPRIV);
    ::syslog(LOG_NOTICE, "uid=%u%s file=%s: %s", ::getuid(), who.c_str(), marked(path).c_str(),
             what.c_str());
    ::closelog();
}

} // namespace

void audit(const std::string& file, const std::vector<Difference>& changed) {
    std::string line;
    for (const Difference& change : changed) {
        const std::string words = in_words(change);
        if (!line.empty() && line.size() + words.size() > LongestLine) {
            log_line(file, line);
            line.clear();
        }
        line += (line.empty() ? "" : "; ") + words;
    }
    if (!line.empty()) {
        log_line(file, line);
    }
}

void audit(const std::string& file, const std::string& what) {
    log_line(file, printable(what));
}

} // namespace ov::ctl
