#include "util/host.h"

#include "util/text.h"

#include <algorithm>
#include <array>
#include <netdb.h>
#include <span>
#include <unistd.h>

namespace ov {

namespace {

constexpr std::size_t HostNameSize = 512;

// A suffix that domains are registered under, and the number of trailing labels that make up such
// a domain, its own included.
struct DomainSuffix {
    std::string_view dom;
    int atom;
};

// Both tables are sorted, for binary search.
constexpr DomainSuffix gTLD[] = {
    {".aero", 2},   {".arpa", 2}, {".biz", 2},  {".com", 2}, {".coop", 2},
    {".edu", 2},    {".gov", 2},  {".info", 2}, {".int", 2}, {".mil", 2},
    {".museum", 2}, {".name", 2}, {".net", 2},  {".org", 2}, {".pro", 2},
};
constexpr DomainSuffix TLDjp[] = {
    {".ac.jp", 3}, {".co.jp", 3}, {".ed.jp", 3}, {".gr.jp", 3}, {".ne.jp", 3}, {".or.jp", 3},
};

// The labels of a domain under `suffix`, or 0 when the table lacks it.
int labels_under(std::span<const DomainSuffix> table, std::string_view suffix) {
    const std::string key = lowered(std::string(suffix));
    const auto row = std::lower_bound(
        table.begin(), table.end(), std::string_view(key),
        [](const DomainSuffix& entry, std::string_view wanted) { return entry.dom < wanted; });
    return row != table.end() && row->dom == key ? row->atom : 0;
}

// The last `labels` labels of `name`, or all of it when it has no more than that.
std::string_view last_labels(std::string_view name, int labels) {
    std::size_t dot = name.size();
    for (int i = 0; i < labels; ++i) {
        if (dot == 0) {
            return name;
        }
        dot = name.rfind('.', dot - 1);
        if (dot == std::string_view::npos) {
            return name;
        }
    }
    return name.substr(dot + 1);
}

std::string_view bounded(std::string_view text, std::size_t siz) {
    return siz == 0 ? std::string_view() : text.substr(0, siz - 1);
}

// How many labels the registrable domain of `name`, which has `dots` dots, is made of.
int domain_labels(std::string_view name, std::ptrdiff_t dots) {
    const std::string_view top = name.substr(name.rfind('.'));
    if (const int labels = labels_under(gTLD, top)) {
        return labels;
    }
    if (same_word(top, ".to")) {
        return 2;
    }
    if (!same_word(top, ".jp")) {
        return 3; // a country code: organisations register under a second level
    }
    if (name.size() < 7 || dots < 2) {
        return 2;
    }
    const std::string_view second = name.substr(name.rfind('.', name.size() - top.size() - 1));
    const int labels = labels_under(TLDjp, second);
    return labels != 0 ? labels : 2;
}

} // namespace

int getmyhostname(std::string& hostname, std::size_t siz) {
    std::array<char, HostNameSize> buffer{};
    std::string own = "localhost";
    if (::gethostname(buffer.data(), buffer.size() - 1) == 0) {
        own = buffer.data();
    }
    const hostent* host = ::gethostbyname(own.c_str());
    if (!host) {
        hostname = bounded(unknown, siz);
        return -1;
    }
    const auto has_dot = [](std::string_view text) { return text.find('.') != text.npos; };
    std::string name = own;
    if (has_dot(host->h_name) || !has_dot(own)) {
        name = std::string_view(host->h_name).substr(0, HostNameSize - 1);
    }
    if (!has_dot(name)) {
        for (char** alias = host->h_aliases; alias && *alias; ++alias) {
            if (has_dot(*alias)) {
                name = *alias;
                break;
            }
        }
    }
    hostname = bounded(name, siz);
    return 0;
}

int get_domain(std::string_view addr, std::string& dom, std::size_t siz) {
    const std::size_t at = addr.find('@');
    const std::string_view name = at == addr.npos ? addr : addr.substr(at + 1);
    const auto dots = std::count(name.begin(), name.end(), '.');
    if (dots == 0) {
        return -1;
    }
    dom = bounded(last_labels(name, domain_labels(name, dots)), siz);
    return 0;
}

int get_internaldomain(std::string& dom, std::size_t siz) {
    std::string name;
    if (getmyhostname(name, HostNameSize) != 0 || name.find('.') == name.npos) {
        return -1;
    }
    return get_domain(name, dom, siz);
}

} // namespace ov
