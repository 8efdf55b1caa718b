// Every key: what it is by default, when it is read, what it takes, and how it is shown.
#include "answer/check_config.h"
#include "answer/get_vals.h"
#include "catalogue/rights.h"
#include "fake_host.h"
#include "installation.h"
#include "load/configuration.h"
#include "load/roles.h"
#include "load/setdir.h"
#include "util/log.h"

#include <gtest/gtest.h>
#include <regex>
#include <set>

namespace ov {
namespace {

using test::Installation;
using test::Result;
using Names = std::set<std::string>; // "Section.Key"

struct Key {
    std::string section;
    std::string key;
    std::string kind;    // as the sample says it
    std::string initial; // as the sample has it
    std::string checked; // as the manual says
    std::string shown;
    std::string name() const { return section + "." + key; }
};

// What a key's item of the manual says behind a name; what it does not mention the key lacks.
std::string said_of(const std::string& item, const std::string& name) {
    const std::size_t at = item.find("\n" + name + ": ") + name.size() + 3;
    return at < name.size() + 3 ? "no." : item.substr(at, item.find('\n', at) - at);
}

// All keys, from the installed sample and the manual.
std::vector<Key> all_keys() {
    const std::string page =
        test::replaced(test::read_file(OV_SHARE_DIR "/man/man5/Tessary.conf.5"), "\\(dq", "\"");
    std::vector<Key> keys;
    std::string section;
    std::string comment;
    for (const std::string& line :
         test::lines_of(test::read_file(OV_SHARE_DIR "/doc/defaults.conf"))) {
        const std::size_t equal = line.find(" =");
        if (line.starts_with('[')) {
            section = line.substr(1, line.size() - 2);
        } else if (equal != line.npos && line.find(' ') == equal) {
            const std::string key = line.substr(1, equal - 1);
            std::size_t at = page.find("\n.Ss \\&[" + section + "]");
            at = page.find("\n.It Ic \"\\&" + key + "\"\n", at) + 1;
            EXPECT_NE(at, 0U) << key << " is not in the manual";
            const std::string item =
                page.substr(at, std::min(page.find("\n.It ", at), page.find("\n.El", at)) + 1 - at);
            keys.push_back({section, key, comment.substr(2), line.substr(equal + 2),
                            said_of(item, "Check"), said_of(item, "Show")});
        }
        comment = line;
    }
    return keys;
}

// A file with every key at its default, in the installation, and with the directories that it
// names. Lookups are logged.
std::string with_defaults(const Installation& gateway, const std::vector<Key>& keys) {
    const std::map<std::string, std::string> own = {
        {"RootDirectory", gateway.path()},
        {"AdmDirectory", gateway.path()},
        {"QueueDirectory", gateway.path()},
        {"LogFacility", "8192"},
        {"LogLevel", "90"},
        {"InternalDomains", "example.com"}, // and those that are not set, but cannot be empty
        {"UnrarProgram", "/bin/sh"},
        {"DomainConfFile", gateway.path("none")},
    };
    std::string text;
    for (const Key& key : keys) {
        const auto found = own.find(key.key);
        const std::string value = found == own.end() ? key.initial : " " + found->second;
        text += "[" + key.section + "]\n" + key.key + " =" + value + "\n";
        if (value.ends_with('/') && !value.starts_with(" /")) {
            std::filesystem::create_directories(gateway.path(value.substr(1)));
        }
    }
    return text;
}

// Which keys are read by `load`, as the log tells.
template <class Load>
Names read_by(Load load) {
    test::write_file(logfile, "");
    load();
    Names names;
    for (const std::string& line : test::lines_of(test::read_file(logfile))) {
        const std::size_t section = line.find("DEBUG sec=") + 10;
        const std::size_t key = line.find(" key=", section);
        names.insert(line.substr(section, key - section) + "." +
                     line.substr(key + 5, line.find("  val=") - key - 5));
    }
    return names;
}

TEST(Keys, AllOfThem) {
    const std::vector<Key> keys = all_keys();
    const Installation gateway;
    for (const char* name : {"mss.mtype.d", "mss.keywd.d", "etc/group"}) {
        std::filesystem::create_directory(gateway.path(name));
    }
    for (const char* name : {"mss.mtype.d/main.mtype", "mss.keywd.d/main.keywd", "template/note"}) {
        gateway.dir.file(name, "");
    }
    test::host = {"mx1", "mx1.example.net", nullptr};
    const std::string text = with_defaults(gateway, keys);
    const std::string file = gateway.dir.file("sample", text);
    const auto load = [&](unsigned mask) { read_config(file.c_str(), mask | RC_NOCHECK); };
    const auto search = [&] { read_config_search(file.c_str(), RC_NOCHECK); };
    const auto shown = [&](const Key& key) {
        return get_vals(file.c_str(), key.section.c_str(), key.key.c_str(), 1).value_or("-");
    };
    std::vector<std::string> initial(keys.size());
    std::transform(keys.begin(), keys.end(), initial.begin(), shown);
    setconfig(file.c_str(), 0xff | RC_NOCHECK, NoRole, nullptr); // lookups are logged from now on
    search();
    load(0);

    // The keys that are read for each group, for the search, when no directory is to be looked at,
    // when only the auxiliary sections are wanted, and for the other programs.
    std::vector<std::pair<std::string, Names>> passes;
    for (int bit = 0; bit < 8; ++bit) {
        passes.emplace_back(std::to_string(bit), read_by([&] { load(1U << bit); }));
    }
    passes.emplace_back("S", read_by(search));
    passes.emplace_back("d", read_by([&] { load(1 | RC_NODIRCHECK); }));
    passes.emplace_back("a", read_by([&] { load(0xff | RC_AUXONLY); }));
    std::vector<std::string> loaded(keys.size());
    std::transform(keys.begin(), keys.end(), loaded.begin(), shown);
    for (const std::string program : {"postfix", "qmail"}) {
        test::write_file(file, test::replaced(text, "Program = sendmail", "Program = " + program));
        passes.emplace_back(program.substr(0, 1), read_by([&] { load(1); }));
    }

    // clang-format off
    const std::string probes[] = {"", "0", "1", "10", "99999", "-1", "4294967296", "yes", "none", "weak", "in", "sendmail",
                                  "a b", "a:b", "/", ".", "main", "note", "10.1", "x@y", "5K", "h:25", gateway.path("template/note")};
    // clang-format on
    std::string listing = "Read: with which bits of the load mask (*: all); S: by the search; d: "
                          "no directories; a: auxiliary sections only; p, q: postfix, qmail\n";
    std::string section;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const Key& key = keys[i];
        if (key.section != section) {
            section = key.section;
            listing += "[" + section + "]\n";
        }
        std::string passed;
        for (const auto& [pass, names] : passes) {
            passed += names.contains(key.name()) ? pass : "";
        }
        listing += key.key + " =" + key.initial + "\n    " +
                   test::replaced(key.kind + ". Read: ", "..", ".") +
                   test::replaced(passed, "01234567", "*") + ". Check: " + key.checked;
        for (const std::string& probe : probes) {
            const bool good = check_config(section.c_str(), key.key.c_str(), probe.c_str()) == 0;
            listing += good ? " \"" + probe + '"' : "";
        }
        listing += " Show: " + key.shown;
        listing += initial[i] == "-" ? "" : " \"" + initial[i] + '"';
        listing += loaded[i] == initial[i] ? "\n" : ", once loaded \"" + loaded[i] + "\"\n";
    }
    test::expect_golden("keys.txt", test::replaced(listing, gateway.path(), "ROOT/"));
}

// What is generated, in parts: the rest is made alike.
TEST(Keys, Generated) {
    const std::tuple<const char*, const char*, const char*> parts[] = {
        {"/man/man5/Tessary.conf.5", ".Ss Kinds of values", "\n.Sh"},
        {"/man/man5/Tessary.conf.5", ".Ss \\&[Queue]", "\n.Ss \\&[Log]"},
        {"/man/man8/ov_admconf.8", ".It Ic Hold\n", "\n.Sh"},
        {"/doc/defaults.conf", "[Queue]", "\n[Log]"},
        {"/bash-completion/completions/ov_conf", "_ov_conf_sections=", "declare -gA _ov_conf_keys"},
        {"/bash-completion/completions/ov_conf", "declare -gA _ov_conf_values", "\n\n"},
        {"/ov-conf/keys", "Admin\tRealName", "Manager\tRealName"},
    };
    std::string listing;
    for (const auto& [file, from, to] : parts) {
        const std::string text = test::read_file(std::string(OV_SHARE_DIR) + file);
        const std::size_t start = text.find(from);
        listing += text.substr(start, text.find(to, start) - start) + "\n";
    }
    test::expect_golden("generated.txt", listing);
}

// Values of keys: "[Section] Key", and for each value whether the load and a check take it, and how
// it is shown when it has been loaded.
TEST(Keys, Values) {
    const Installation gateway;
    for (const char* name : {"mss.keywd.d", "mss.mtype.d", "logs/sub"}) {
        std::filesystem::create_directory(gateway.path(name));
    }
    for (const char* name :
         {"mss.keywd.d/main_1.keywd", "mss.keywd.d/a-b.keywd", "mss.keywd.d/\xe9.keywd",
          "mss.mtype.d/strict.mtype", "mss.mtype.d/a-b.mtype", "template/note", "file"}) {
        gateway.dir.file(name, "");
    }
    const std::string head = test::read_file(gateway.file);
    std::string section;
    std::string key;
    const auto run = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"ov_conf", "-f", gateway.file, "-s", section, "-k", key});
        return test::run(words);
    };
    // One of a refused value is "no" when it is the usual one of the section's reader.
    const auto verdict = [&](const Result& result, const std::string& value) -> std::string {
        const std::string named = "[" + section + "] " + key;
        const std::string at = gateway.file + ":2: ";
        const std::string main = at + named + ": \"" + value + "\" invalid value";
        if (result.status == 0 || result.err == "501 ??? default value get failed\n") {
            return "yes" + (result.err.empty() ? "" : " " + test::escaped(result.err));
        }
        for (const std::string& usual :
             {main + " \n", main + "\n", at + "invalid value, " + named + ": " + value + "\n"}) {
            if (result == Result{1, "", usual}) {
                return usual == main + " \n" ? "no" : usual == main + "\n" ? "no (S)" : "no (A)";
            }
        }
        return "no " + test::escaped(test::replaced(result.err, at, "AT "));
    };
    std::string listing;
    Names seen;
    for (const std::string& line :
         test::lines_of(test::read_file(test::golden_path("values.txt")))) {
        if (!line.starts_with("|")) {
            section = line.substr(1, line.find(']') - 1);
            key = line.substr(line.find(']') + 2);
            listing += line + "\n";
            seen.insert(section + "." + key);
            continue;
        }
        const std::string given = line.substr(1, line.find('|', 1) - 1);
        const std::string value = test::unescaped(test::replaced(given, "ROOT/", gateway.path()));
        test::write_file(gateway.file, "[" + section + "]\n" + key + " = " + value + "\n" + head);
        Result loaded = section == "Search" ? Result{0, "", ""} : run({"-m"});
        std::string shown = "-";
        if (loaded.status == 0) {
            const Result printed = run({"-a"}); // loads the search, too
            shown = printed.status == 0 ? test::escaped(test::lines_of(printed.out)[0].substr(3))
                                        : shown;
            loaded = section == "Search" ? printed : loaded;
        }
        test::write_file(gateway.file, head);
        const bool good = setdir(gateway.file.c_str()) == 0 &&
                          check_config(section.c_str(), key.c_str(), value.c_str()) == 0;
        listing += "|" + given + "| " + verdict(loaded, value) + (good ? ", yes, " : ", no, ") +
                   shown + "\n";
    }
    test::expect_golden("values.txt", test::replaced(listing, gateway.path(), "ROOT/"));
    for (const Key& shown : all_keys()) {
        EXPECT_TRUE(shown.shown == "no." || seen.contains(shown.name())) << shown.name();
    }
}

// Every right: what the manual says of it (its kind, the defaults of the roles, whether it can be
// asked for and how it can be changed), which values it takes from a file, what the query of it
// then answers, and which values it can be given from the command line.
TEST(Keys, Rights) {
    const Installation gateway;
    const std::string file = gateway.path("admin/taro.conf");
    const std::string values[] = {"", "0", "yes", "3", "envelope", "2008/02/31", "99999"};
    const auto run = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"ov_admconf", "-f", gateway.file, "-u", "taro"});
        return test::run(words);
    };
    std::string listing;
    std::size_t tried = 0;
    const std::string page = test::read_file(OV_SHARE_DIR "/man/man8/ov_admconf.8");
    for (const std::string& line : test::lines_of(page)) {
        static const std::regex row("\\.It Ic (\\w+) Ta [^|]+ Ta .* Ta (yes|no) Ta [^|]+");
        std::smatch parts;
        if (!std::regex_match(line, parts, row)) {
            continue;
        }
        const std::string key = parts[1];
        ++tried;
        std::string taken;
        std::set<std::string> answers;
        std::string given;
        for (const std::string& value : values) {
            const std::string entry = key + " = " + value + "\n";
            test::write_file(file, "[Admin]\n" + entry + "HoldFreeze = no\nHoldConfirm = no\n" +
                                       "SelectGroupList = 1\n");
            const Result asked = run({key});
            if (asked.err.empty()) {
                taken += " \"" + value + '"';
                answers.insert(test::escaped(asked.out));
            }
            given += run({"-m", key + "=" + value}).status == 0 ? " \"" + value + '"' : "";
        }
        listing +=
            test::replaced(line.substr(7), " Ta ", " | ") + "\n    Takes" + taken + ", answers";
        for (const std::string& answer : answers) {
            listing += " \"" + answer + '"';
        }
        listing += ", is given" + given + "\n";
    }
    EXPECT_EQ(tried, rights().size());
    test::expect_golden("rights.txt", listing);
}

} // namespace
} // namespace ov
