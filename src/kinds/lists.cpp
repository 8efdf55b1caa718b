#include "kinds/loading.h"
#include "kinds/values.h"
#include "util/host.h"

#include <algorithm>
#include <utility>

namespace ov::kinds {

namespace {

// The texts that `text_of` gives for the items of a list, with ":" between them.
template <class List, class TextOf>
std::string joined(const List& list, TextOf text_of) {
    std::string text;
    bool first = true;
    for (const auto& item : list) {
        if (!first) {
            text += ':';
        }
        first = false;
        text += text_of(item);
    }
    return text;
}

bool are_domain_names(const Loading& value, const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (word.find_first_of("@?#$%&:;[]!<>()~{}/+^|,=\"") != word.npos) {
            value.load.tell("invalid domain name\"" + word + "\"\n");
            return false;
        }
    }
    return true;
}

// Clears the list and gives each word of `text` to `read`, which says whether it is valid, with a
// record of its own. More words than there are records are invalid.
template <class Read>
Verdict fill(ServerList& list, const std::string& text, const char* separators, Read read) {
    for (SVRLIST& record : list) {
        record.host.unset();
        record.port = 0;
        record.flg = 0;
    }
    const WordList words = split_str(text, separators);
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    if (words->size() > list.size()) {
        return Verdict::Invalid;
    }
    auto record = list.begin();
    for (const std::string& word : *words) {
        if (!read(word, *record++)) {
            return Verdict::Invalid;
        }
    }
    return Verdict::Taken;
}

// What `host` marks in a list of servers (see SVRLIST); 0: it is a host.
int marker(std::string_view host) {
    return same_word(host, MspMarker) ? 1 : same_word(host, CommandMarker) ? 2 : 0;
}

// Reads "host" or "host:port", or a marker where it may stand. Returns whether the port is one.
bool read_server(const std::string& word, bool markers_allowed, SVRLIST& server) {
    const std::optional<HostAndPort> given = split_hostport(word);
    if (!given) {
        return false;
    }
    server.flg = markers_allowed ? marker(given->host) : 0;
    if (server.flg != 0) {
        server.host.set(server.flg == 1 ? MspMarker : CommandMarker);
    } else {
        server.host.set(given->host);
        server.port = given->port;
    }
    return true;
}

Verdict load_server_list(const Loading& value, bool markers_allowed) {
    const Verdict verdict =
        fill(other<ServerList>(value.manner.first), value.text, separators_of(value),
             [markers_allowed](const std::string& word, SVRLIST& server) {
                 return read_server(word, markers_allowed, server);
             });
    return verdict == Verdict::Taken ? load_text(value) : verdict;
}

} // namespace

Verdict load_words(const Loading& value) {
    WordList words = split_str(value.text, separators_of(value));
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    setting<WordList>(value) = std::move(words);
    return Verdict::Taken;
}

Verdict load_sets(const Loading& value) {
    if (value.text.empty()) {
        setting<WordList>(value).reset();
        return Verdict::Taken;
    }
    return load_words(value);
}

Verdict load_internal_domains(const Loading& value) {
    constexpr std::size_t LongestDomainList = 4096;
    std::string domains = value.text;
    const bool given = !domains.empty();
    if (!given) {
        if (value.load.mask & (RC_NOCHECK | RC_NOHOST)) {
            return Verdict::Taken;
        }
        if (get_internaldomain(domains, LongestDomainList) != 0) {
            value.load.tell("cannot set default internal domain\n");
            return Verdict::Invalid;
        }
    }
    WordList words = split_str(domains, separators_of(value));
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    if (!given && !are_domain_names(value, *words)) {
        return Verdict::Invalid;
    }
    setting<WordList>(value) = std::move(words);
    return Verdict::Taken;
}

bool are_domains(const Value& value) {
    return all_words(value, separators_of(value), [](const std::string& word) {
        return std::all_of(word.begin(), word.end(), is_name_character);
    });
}

std::optional<std::string> show_names(const Value& value) {
    const WordList& list = setting<WordList>(value);
    return list ? joined(*list, [](const std::string& word) { return word; }) : "";
}

std::optional<std::string> show_internal_domains(const Value& value) {
    if (setting<WordList>(value)) {
        return show_names(value);
    }
    std::string domain;
    return get_internaldomain(domain, MaxText + 1) == 0 ? domain : "";
}

Verdict load_ip_conditions(const Loading& value) {
    int no_memory = 0;
    IpList conditions = ipaddr_makeaddr(value.text, &no_memory);
    if (!conditions) {
        return no_memory ? Verdict::MemoryExhausted : Verdict::Invalid;
    }
    setting<IpList>(value) = std::move(conditions);
    return Verdict::Taken;
}

bool are_networks(const Value& value) {
    return all_words(value, separators_of(value),
                     [](const std::string& word) { return isvalid_ipaddr(word.c_str(), 0) != 0; });
}

std::optional<std::string> show_conditions(const Value& value) {
    return joined(setting<IpList>(value).value_or(IpConditions{}),
                  [](const IPADDRCOND& condition) { return condition.str.data(); });
}

Verdict load_addresses(const Loading& value) {
    const WordList words = split_str(value.text, ";,");
    if (!words) {
        return Verdict::MemoryExhausted;
    }
    if (!(value.load.mask & RC_NOCHECK)) {
        if (std::cmp_greater(words->size(), installation.most_addresses)) {
            value.load.tell("Too much mail addresses. \"" + value.text + "\"\n");
            return Verdict::Invalid;
        }
        for (const std::string& word : *words) {
            if (!isvalid_address(word.c_str(), AddressPlain)) {
                value.load.tell(std::string("Invalid mail address") +
                                value.manner.punctuation.data() + " \"" + word + "\"\n");
                return Verdict::Invalid;
            }
        }
    }
    AddressList list;
    for (const std::string& word : *words) {
        if (!append_addresses(&list, word)) {
            free_ADDRS(std::move(list));
            return Verdict::MemoryExhausted;
        }
    }
    free_ADDRS(std::exchange(setting<AddressList>(value), std::move(list)));
    return Verdict::Taken;
}

bool are_addresses(const Value& value) {
    return all_words(value, ";,", [](const std::string& word) {
        return isvalid_address(word.c_str(), AddressStrict) != 0;
    });
}

// As many addresses as fit a path-sized line, with nothing in them that a terminal would obey.
std::optional<std::string> show_addresses(const Value& value) {
    std::string text;
    const ADDRS* cell = setting<AddressList>(value).get();
    for (; cell; cell = cell->next.get()) {
        const std::string_view address = cell->str ? std::string_view(*cell->str) : "";
        if (text.size() + (text.empty() ? 0 : 1) + address.size() > MaxPath) {
            break;
        }
        if (!text.empty()) {
            text += ';';
        }
        text += address;
    }
    for (char& c : text) {
        if (c == '\t' || c == '\r' || c == '\n') {
            c = ' ';
        } else if (!is_printable(c)) {
            c = '?';
        }
    }
    return text;
}

Verdict load_servers(const Loading& value) {
    return load_server_list(value, false);
}

Verdict load_servers_and_markers(const Loading& value) {
    return load_server_list(value, true);
}

bool are_servers(const Value& value) {
    const WordList words = split_str(value.text, separators_of(value));
    return words && words->size() <= std::tuple_size_v<ServerList> &&
           std::all_of(words->begin(), words->end(), [](const std::string& word) {
               return marker(word) != 0 || isvalid_hostport(word);
           });
}

bool is_host_port(const Value& value) {
    return isvalid_hostport(value.text.substr(0, value.manner.longest));
}

Verdict load_user_group(const Loading& value) {
    return fill(setting<ServerList>(value), value.text, separators_of(value),
                [](const std::string& word, SVRLIST& member) {
                    member.host.set(word);
                    return true;
                });
}

std::optional<std::string> show_user_group(const Value& value) {
    std::vector<std::string_view> names;
    for (const SVRLIST& member : setting<ServerList>(value)) {
        if (member.host) {
            names.push_back(member.host.view());
        }
    }
    return joined(names, [](std::string_view name) { return name; });
}

} // namespace ov::kinds
