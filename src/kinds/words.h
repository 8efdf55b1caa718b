// What people are told of the kinds, for the manual. In braces stands what the row puts in:
// {bounds}, {range}, {words}, {separators}, {longest}, {unit}, and the keys of its other settings,
// {first} and {second}.
#pragma once

#include "kinds/kinds.h"

#include <algorithm>
#include <span>
#include <string>

namespace ov::kinds {

// A value of a setting as a file has it; a text is written as it stands.
std::string in_digits(const Value& value);
std::string as_yes_or_no(const Value& value);
std::string as_its_word(const Value& value);
std::string as_its_level(const Value& value);
std::string as_size(const Value& value);
std::string as_size_of_kilobytes(const Value& value);

struct KindWords {
    const Kind* record;
    const char* load;              // "name" or "name|details"
    const char* meaning = nullptr; // of the name; kinds of one name have one
    const char* offered = nullptr; // the values that the completion offers; {choices}: the words
    std::string (*written)(const Value&) = in_digits;
};
inline constexpr const char* BooleanMeaning = "true, yes, on, 1 or false, no, off, 0, in any case.";
inline constexpr KindWords kind_words[] = {
    {&Boolean, "boolean", BooleanMeaning, "yes no", as_yes_or_no},
    {&Flag, "boolean", BooleanMeaning, "yes no"},
    {&Integer, "number|{bounds}",
     "A decimal number, for permissions, too: 416 is 0640. Text behind it is overlooked, and "
     "without "
     "digits it is 0. A setting without a sign takes a negative number and wraps it."},
    {&Integer64, "number|{range}"},
    {&PrefixedNumber, "number",
     "A number; with 0x in front it is hexadecimal, with 0 octal. Without digits it is 0."},
    {&Digits, "digits|{bounds}", "Decimal digits and nothing else."},
    {&Limit, "limit", "Digits from {bounds}; nothing leaves it as it is."},
    {&Within, "digits|from {first} to {second}"},
    {&Word, "word|{words}", "One of the words that are listed, in any case.", "{choices}",
     as_its_word},
    {&Selection, "selection", "One of {words}, in any case.", nullptr, as_its_word},
    {&Level, "level|{words}, or {bounds}",
     "A word or a number; the words stand for 9999 (none), 1 (weak) and 0 (strong). Any other word "
     "is read as a number without digits: as 0.",
     "{choices}", as_its_level},
    {&Bytes, "size|in bytes; without a unit: {unit}",
     "Numbers of at most nine digits, each with a unit \"B\", \"K\", \"M\" or \"G\" in either case "
     "(1024-based), added up: \"1G512M\". The last number may lack its unit.",
     nullptr, as_size},
    {&Kilobytes, "size|held in kilobytes; without a unit: M", nullptr, nullptr,
     as_size_of_kilobytes},
    {&MinFree, "size|to stay free where {first} is; held in kilobytes; without a unit: M", nullptr,
     nullptr, as_size_of_kilobytes},

    {&PlainText, "text", "Any text."},
    {&Signature, "text|of at most {longest} characters; empty: none"},
    {&Date, "date", "A date like 2008/02/31, or nothing for none."},

    {&Path, "path", "The full path of something; \"ov_conf -m\" wants it to exist."},
    {&File, "file|relative: in EtcDirectory", "The path of a file, which need not exist."},
    {&FullFile, "file|with its full path"},
    {&Directory, "directory|relative: under {first}",
     "A directory that exists. A default is not looked at."},
    {&CreatedDirectory, "directory|relative: under {first}; made when it is missing"},
    {&FullDirectory, "directory|with its full path"},
    {&TemplateFolder, "directory|relative: under RootDirectory; empty: none"},

    {&Words, "words|{separators}", "Any words."},
    {&Names, "names", "Names, with \":\" between them."},
    {&Sets, "names"},
    {&InternalDomainList, "domains|{separators}",
     "Mail domains. Without any, the registrable domain of the host's own name counts; on a host "
     "whose name has none, they have to be given."},
    {&IpConditionList, "IP addresses|{separators}",
     "IPv4 addresses, leading parts of one, networks with the mask length behind \"/\", or "
     "patterns "
     "with \"*\"."},
    {&MailAddresses, R"(mail addresses|separated by ";" or ","; at most MaxAddressList)",
     "Mail addresses, also with a name, \"Taro <taro@example.com>\": the bare address is kept."},
    {&Servers, "servers",
     "At most eight of \"host\" or \"host:port\", separated by blanks, with a port from 1 to "
     "60000; "
     "without one it is 25."},
    {&ServersAndMarkers, R"(servers|"_MSP_" and "_CMD_" may be among them)"},
    {&UserGroup, "words|{separators}; at most eight"},
};

struct CheckWords {
    const Check* record;
    const char* text;
    const char* offered = nullptr;
};
inline constexpr CheckWords check_words[] = {
    {&IsBoolean, "boolean", "yes no"},
    {&IsNumber, "number (0x in front passes, too, but loads as 0)"},
    {&IsNotNegative, "number, not negative (0x in front passes, too, but loads as 0)"},
    {&AreDigits, "digits: {bounds}"},
    {&AreAllDigits, "digits"},
    {&IsWithin, "digits within the defaults of these limits"},
    {&IsWord, "word: {words}", "{choices}"},
    {&IsLevel, "level: {words}, or {bounds}", "{choices}"},
    {&IsNoneOrNumber, "level: none, or {bounds}", "none"},
    {&IsBytes, "size; without a unit: {unit}"},
    {&IsKilobytes, "size; without a unit: M"},

    {&IsAnything, "anything"},
    {&IsOneWord, "text without a blank"},

    {&IsProgram, "existing program with its full path"},
    {&IsCommand, "existing program with its full path, and arguments"},
    {&IsListProgram, "existing program, or anything that is no full path"},
    {&IsExistingDirectory, "existing directory"},
    {&IsQueueFolder, "existing directory with its full path"},
    {&IsDirectoryUnder, "existing directory; relative: under {first} at its default"},
    {&IsDirectoryUnderRoot, "existing directory; relative: under RootDirectory"},
    {&AreDirectories, "existing directories, {separators}"},
    {&AreDevices, "writable files, {separators}, not directories only"},
    {&IsTemplateFile, "existing file; relative: in TemplateDirectory"},
    {&IsKeywordSet, "name of a keyword set that can be read where KEYWD_Dir is by default"},
    {&IsMimeTypeSet, "name of a MIME type set that can be read where MTYPE_Dir is by default"},

    {&AreDomains, R"(domains of letters, digits, ".", "-" and "_")"},
    {&AreNetworks, "IP addresses and networks"},
    {&AreAddresses, R"(mail addresses of letters, digits, ".", "-" and "_")"},
    {&AreServers, R"(at most eight servers, "_MSP_" and "_CMD_" among them)"},
    {&IsHostPort, R"("host" or "host:port", of which {longest} characters count)"},
};

struct FormWords {
    const Form* record;
    const char* text;
};
inline constexpr FormWords form_words[] = {
    {&AsNumber, "number"},
    {&AsTrueOrFalse, "true or false"},
    {&AsByteSize, "size with units"},
    {&AsHexCode, "0x and eight hexadecimal digits"},
    {&AsHex, "hexadecimal digits"},
    {&AsAccess, "its two lowest bits"},
    {&AsWord, "word"},
    {&AsLevel, "number, or \"none\""},

    {&AsText, "text"},
    {&AsLowerBound, "date"},
    {&AsUpperBound, "date"},

    {&AsNames, R"(names, with ":" between them)"},
    {&AsInternalDomains, R"(list, separated by ":"; the host's own domain when there is none)"},
    {&AsConditions, "list, {separators}"},
    {&AsAddresses, R"(list, separated by ";")"},
    {&AsUserGroup, "list, {separators}"},
};

// The words of a kind, a check or a form in its table; null when it has none.
template <class Words, class Record>
constexpr const Words* words_in(std::span<const Words> table, const Record& record) {
    const auto found = std::find_if(table.begin(), table.end(),
                                    [&](const Words& words) { return words.record == &record; });
    return found == table.end() ? nullptr : &*found;
}
constexpr const KindWords* words_of(const Kind& kind) {
    return words_in<KindWords>(kind_words, kind);
}
constexpr const CheckWords* words_of(const Check& check) {
    return words_in<CheckWords>(check_words, check);
}
constexpr const FormWords* words_of(const Form& form) {
    return words_in<FormWords>(form_words, form);
}

} // namespace ov::kinds
