// Every key and every right: what it is by default, when it is read, what it takes, and how it is
// shown.
#include "answer/check_config.h"
#include "answer/get_vals.h"
#include "catalogue/catalogue.h"
#include "catalogue/reset.h"
#include "catalogue/rights.h"
#include "installation.h"
#include "load/configuration.h"
#include "load/roles.h"
#include "load/setdir.h"
#include "util/log.h"

#include <array>
#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <sstream>

namespace ov {
namespace {

using test::Installation;
using test::Result;

struct Key {
    std::string section;
    std::string key;
    std::string kind;
    std::string checked; // "-": cannot be
    std::string shown;
    std::string initial;
    std::string name() const { return section + "." + key; }
    // Without the key's own name, in those of its limits.
    std::string rule() const {
        return test::replaced(kind, key + "_", "KEY_") + " | " + checked + " | " + shown;
    }
};

// All keys of the installed list, those of rights aside.
std::vector<Key> all_keys() {
    static const std::regex columns(
        "([^\t]*)\t([^\t]*)\t([^\t]*)\t([^\t]*)\t([^\t]*)\t([^\t]*)\t.*");
    std::vector<Key> keys;
    for (const std::string& line : test::lines_of(test::read_file(OV_SHARE_DIR "/ov-conf/keys"))) {
        std::smatch row;
        if (std::regex_match(line, row, columns) && find_row(row.str(1), row.str(2))) {
            keys.push_back({row[1], row[2], row[3], row[4], row[5], row[6]});
        }
    }
    EXPECT_EQ(keys.size(), catalogue().size());
    return keys;
}

using Texts = std::map<std::string, std::string>; // by the names of keys

// A value that the key takes, and that is neither its default nor, where that can be, another's.
std::string own_value(const Installation& gateway, const Key& key) {
    const std::string kind = key.kind.substr(0, key.kind.find(':'));
    if (kind == "digits" || kind == "number") {
        const std::int64_t number = std::stoll(key.initial);
        return std::to_string(number == 1 ? 2 : number ^ 1); // both within the bounds
    }
    if (kind == "word") {
        return key.kind.substr(key.kind.rfind(' ') + 1);
    }
    if (kind == "path" || kind == "file" || kind == "directory") {
        return gateway.path("template/");
    }
    const Texts values = {{"boolean", key.initial == "yes" ? "no" : "yes"},
                          {"level", "7"},
                          {"size", "7"},
                          {"IP addresses", "10.7."}};
    const auto found = values.find(kind);
    return found == values.end() ? key.key : found->second;
}

Texts own_values(const Installation& gateway, const std::string& program) {
    Texts values;
    for (const Key& key : all_keys()) {
        values[key.name()] = own_value(gateway, key);
    }
    values["Log.LogFacility"] = "8192"; // lookups are logged, once the log has been told
    values["Log.LogLevel"] = "90";
    values["SMTP.MailSubmissionProgram"] = program;
    return values;
}

void write_keys(const Installation& gateway, const Texts& values) {
    std::string text;
    for (const auto& [name, value] : values) {
        text += "[" + test::replaced(name, ".", "] ") + " = " + value + "\n";
    }
    test::write_file(gateway.file, text);
}

// Items under what they have in common, on lines that can be read.
using Groups = std::map<std::string, std::string>;
void add(Groups& groups, const std::string& common, const std::string& item) {
    constexpr std::size_t Longest = 98;
    std::string& lines = groups[common];
    const std::size_t last = lines.size() - (lines.rfind('\n') + 1);
    lines += lines.empty() || last + item.size() > Longest ? "\n    " + item : " " + item;
}
std::string listing_of(const Groups& groups) {
    std::string listing;
    for (const auto& [common, lines] : groups) {
        listing += common + lines + "\n";
    }
    return listing;
}

// By rule: which keys are of a kind, and are checked and shown alike, and from which key on others
// are read.
TEST(Keys, ByRule) {
    const Installation gateway;
    const char* file = gateway.file.c_str();
    Texts passed;
    const auto pass = [&](const std::string& code, const auto& load) {
        static const std::regex looked_up("DEBUG sec=(\\S*) key=(\\S*) ");
        test::write_file(logfile, "");
        load();
        const std::string log = test::read_file(logfile);
        for (std::sregex_iterator at(log.begin(), log.end(), looked_up), end; at != end; ++at) {
            std::string& codes = passed[at->str(1) + "." + at->str(2)];
            codes += codes.ends_with(code) ? "" : code;
        }
    };
    const auto pass_main = [&](const std::string& code, unsigned mask) {
        pass(code, [&] { read_config(file, mask | RC_NOCHECK); });
    };
    write_keys(gateway, own_values(gateway, "sendmail"));
    setconfig(file, 0xff | RC_NOCHECK, NoRole, nullptr);

    // The keys that are read for each group, for the search, when no directory is to be looked at,
    // when only the auxiliary sections are wanted, and for the other programs.
    for (int bit = 0; bit < 8; ++bit) {
        pass_main(std::to_string(bit), 1U << bit);
    }
    pass("S", [&] { read_config_search(file, RC_NOCHECK); });
    pass_main("d", 1 | RC_NODIRCHECK);
    pass_main("a", 0xff | RC_AUXONLY);
    for (const std::string program : {"postfix", "qmail"}) {
        write_keys(gateway, own_values(gateway, program));
        pass_main(program.substr(0, 1), 1);
    }

    Groups groups;
    Groups changes;
    std::string before;
    std::map<std::string, std::string> sections; // the last one of each group
    for (const Key& key : all_keys()) {
        std::string& section = sections[key.rule()];
        const std::string heading = section == key.section ? "" : "[" + key.section + "] ";
        section = key.section;
        add(groups, key.rule(), heading + key.key + (key.initial == "-" ? "" : "=" + key.initial));
        const std::string& codes = passed[key.name()];
        if (std::exchange(before, codes) != codes) {
            add(changes,
                "Read: with bits of the load mask (*: all), S: by the search, d: without "
                "directories,\na: auxiliary sections only, p, q: for postfix, qmail",
                key.name() + ":" + test::replaced(codes, "01234567", "*"));
        }
    }
    test::expect_golden("keys.txt", listing_of(groups) + listing_of(changes));
}

// Each key with a value of its own loads and is shown, and what is shown loads to the same, be it
// with each of the programs: what ov_conf shows of a key, and what ov_confctl shows of all.
TEST(Keys, ShownAndLoadedAgain) {
    const std::vector<Key> keys = all_keys();
    const Installation gateway;
    const auto in_force = [&] {
        reset_settings();
        read_config(gateway.file.c_str(), 0xff);
        read_config_search(gateway.file.c_str(), 0);
        Texts shown;
        for (const Key& key : keys) {
            shown[key.name()] =
                get_vals(gateway.file.c_str(), key.section.c_str(), key.key.c_str(), 1)
                    .value_or("-");
        }
        return shown;
    };
    const auto loaded = [&](const Texts& values) {
        write_keys(gateway, values);
        return in_force();
    };
    const Texts initial = loaded(
        {{"Directories.RootDirectory", gateway.path()}, {"Mail.InternalDomains", "example.com"}});
    for (const char* program : {"sendmail", "postfix", "qmail"}) {
        Texts values = own_values(gateway, program);
        const Texts once = loaded(values);
        for (const Key& key : keys) {
            const std::string& text = once.at(key.name());
            const int only = find_row(key.section, key.key)->gate.program;
            EXPECT_EQ(text == "-", key.shown == "-") << key.name();
            EXPECT_TRUE(key.checked != "-" ||
                        check_config(key.section.c_str(), key.key.c_str(), "1") != 0)
                << key.name();
            EXPECT_TRUE(key.shown == "-" || text == program || text != initial.at(key.name()) ||
                        (only != 0 && !is_chosen(only)))
                << key.name() << " keeps its default";
            // Without its unit, or in hexadecimal digits, a number is read as another one.
            if (key.shown != "-" && key.shown.find("hexadecimal") == std::string::npos &&
                !(key.kind.starts_with("size") && key.shown == "number")) {
                values[key.name()] = text;
            }
        }
        EXPECT_EQ(loaded(values), once) << program;
        const Result shown = test::run({"ov_confctl", "-f", gateway.file, "show", "--secrets"});
        test::write_file(gateway.file, shown.out);
        EXPECT_EQ(in_force(), once) << program;
        EXPECT_EQ(test::run({"ov_confctl", "-f", gateway.file, "show", "--secrets"}), shown);
        const auto is_unread = [](const Key& key) {
            const int only = find_row(key.section, key.key)->gate.program;
            return only != 0 && !is_chosen(only);
        };
        EXPECT_EQ(std::count(shown.out.begin(), shown.out.end(), '#'),
                  std::count_if(keys.begin(), keys.end(), is_unread))
            << "the other programs' keys, and they only, keep their defaults";
    }
}

// What is generated, in parts: the rest is made alike. Behind the name of a file ("== NAME") stand
// parts of it in their order, an empty line between them; each begins where its first line is next.
TEST(Keys, Generated) {
    std::string listing;
    std::istringstream file;
    bool begins = false;
    for (const std::string& line :
         test::lines_of(test::read_file(test::golden_path("generated.txt")))) {
        const bool separates = line.empty() || line.starts_with("== ");
        if (separates && !line.empty()) {
            file = std::istringstream(test::read_file(OV_SHARE_DIR "/" + line.substr(3)));
        }
        std::string found = line;
        while (!separates && std::getline(file, found) && begins && found != line) {
        }
        listing += separates || file ? found + "\n" : "";
        begins = separates;
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
    const auto run = [&](const char* mode) {
        return test::run({"ov_conf", "-f", gateway.file, "-s", section, "-k", key, mode});
    };
    // What is said of a refused value: "no" when that is what its section's reader says.
    const auto verdict = [&](const Result& result, const std::string& value) -> std::string {
        const std::string named = "[" + section + "] " + key;
        const std::string at = gateway.file + ":2: ";
        const std::string main = at + named + ": \"" + value + "\" invalid value";
        const Texts usual = {{"", "yes"},
                             {"501 ??? default value get failed\n", "yes"}, // and cannot be shown
                             {main + " \n", "no"},
                             {main + "\n", "no (S)"},
                             {at + "invalid value, " + named + ": " + value + "\n", "no (A)"}};
        EXPECT_EQ(result.status == 0, result.err.empty());
        const auto found = usual.find(result.err);
        return found != usual.end() ? found->second
                                    : "no " + test::escaped(test::replaced(result.err, at, "AT "));
    };
    std::string listing;
    std::set<std::string> tried;
    for (const std::string& line :
         test::lines_of(test::read_file(test::golden_path("values.txt")))) {
        if (!line.starts_with("|")) {
            section = line.substr(1, line.find(']') - 1);
            key = line.substr(line.find(']') + 2);
            listing += line + "\n";
            tried.insert(section + "." + key);
            continue;
        }
        const std::string given = line.substr(1, line.find('|', 1) - 1);
        const std::string value = test::unescaped(test::replaced(given, "ROOT/", gateway.path()));
        test::write_file(gateway.file, "[" + section + "]\n" + key + " = " + value + "\n" + head);
        const Result loaded = run("-m");
        const Result printed = loaded.status == 0 ? run("-a") : loaded; // loads the search, too
        const std::string shown =
            printed.status == 0 ? test::escaped(test::lines_of(printed.out)[0].substr(3)) : "-";
        test::write_file(gateway.file, head);
        const bool good = setdir(gateway.file.c_str()) == 0 &&
                          check_config(section.c_str(), key.c_str(), value.c_str()) == 0;
        listing += "|" + given + "| " + verdict(section == "Search" ? printed : loaded, value) +
                   (good ? ", yes, " : ", no, ") + shown + "\n";
    }
    test::expect_golden("values.txt", test::replaced(listing, gateway.path(), "ROOT/"));
    // Without what the keys have of their own: bounds, and names of other keys.
    static const std::regex own("[0-9]+|\\w+(_MIN|_MAX|Directory|Queue)\\b");
    Texts with_values;
    Texts without;
    for (const Key& each : all_keys()) {
        Texts& rules = tried.contains(each.name()) ? with_values : without;
        for (const std::string& rule : {each.kind, each.checked, each.shown}) {
            rules[std::regex_replace(rule, own, "")] = each.name();
        }
    }
    for (const auto& [rule, name] : without) {
        EXPECT_TRUE(with_values.contains(rule))
            << "add values of the key to golden/values.txt: " << name << ", " << rule;
    }
}

// By rule: which values rights take from a file, what the query of them then answers, and which
// values they can be given from the command line. The manual has a row for each right: its name,
// its kind, the defaults of the roles, whether it can be asked for and how it can be changed.
TEST(Keys, Rights) {
    const Installation gateway;
    const std::string file = gateway.path("admin/taro.conf");
    const std::string values[] = {"", "0", "yes", "3", "envelope", "2008/02/31", "99999"};
    const auto run = [&](const std::string& role, std::vector<std::string> words) {
        words.insert(words.begin(), {role, "-f", gateway.file});
        return test::run(words);
    };
    Groups groups;
    std::array<std::string, Roles> initial;
    for (const std::string& line :
         test::lines_of(test::read_file(OV_SHARE_DIR "/man/man8/ov_admconf.8"))) {
        static const std::regex row("\\.It Ic (\\w+) Ta ([^|]+) Ta (.*) Ta (yes|no) Ta ([^|]+)");
        std::smatch parts;
        if (!std::regex_match(line, parts, row)) {
            continue;
        }
        const std::string key = parts[1];
        std::string taken;
        std::string answers;
        std::string given;
        for (const std::string& value : values) {
            test::write_file(file, "[Admin]\n" + key + " = " + value +
                                       "\nHoldFreeze = no\nHoldConfirm = no\n"
                                       "SelectGroupList = 1\n");
            const Result asked = run("ov_admconf", {"-u", "taro", key});
            if (asked.err.empty()) {
                taken += " \"" + value + '"';
                const std::string answer = " \"" + test::escaped(asked.out) + '"';
                answers += answers.find(answer) == answers.npos ? answer : "";
            }
            const bool is_given =
                run("ov_admconf", {"-u", "taro", "-m", key + "=" + value}).status == 0;
            given += is_given ? " \"" + value + '"' : "";
        }
        add(groups,
            parts.str(2) + ", asked for: " + parts.str(4) + ", changed: " + parts.str(5) +
                "\n  Takes" + taken + ", answers" + answers + ", is given" + given,
            key + "=" + test::replaced(parts[3], " ", ","));
        std::istringstream defaults(parts[3]);
        std::string text;
        for (std::string& entries : initial) {
            defaults >> text; // what is the same for all roles stands there once
            entries += key + " = " + (text == "-" ? "" : text) + "\n";
        }
    }
    EXPECT_EQ(test::lines_of(initial[0]).size(), rights().size());
    for (const std::string& line : test::lines_of(run("ov_admconf", {}).out)) {
        add(groups, "The listing, in its order", line.substr(0, line.find(':')));
    }
    test::expect_golden("rights.txt", listing_of(groups));

    // With the defaults of a role, the listing of a user is that of the role.
    const auto listed = [](const Result& result) {
        return result.err + "\n" + result.out.substr(result.out.find("--"));
    };
    const char* roles[] = {"ov_admconf",   "ov_mgrconf",   "ov_sysadmconf",
                           "srch_admconf", "srch_mgrconf", "srch_sysadmconf"};
    for (std::size_t i = 0; i < Roles; ++i) {
        test::write_file(file, "[Admin]\n" + initial[i]);
        EXPECT_EQ(listed(run(roles[i], {})), listed(run("ov_admconf", {"-u", "taro"}))) << roles[i];
    }
}

} // namespace
} // namespace ov
