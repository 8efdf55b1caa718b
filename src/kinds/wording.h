// What people are told of the kinds, for the manual. In braces stands what the row puts in:
// {bounds}, {range}, {words}, {separators}, {longest}, {unit}, and the keys of its other settings,
// {first} and {second}; {choices} are the words with blanks between.
#pragma once

#include "kinds/kinds.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace ov::kinds {

// What is said of a kind, a check or a form.
template <class Record>
struct WordsOf {
    const Record* record;
    const char* text;
};

// Kinds: "name" or "name|details".
inline constexpr WordsOf<Kind> kind_words[] = {
    {&Boolean, "boolean"},
    {&Flag, "boolean"},
    {&Integer, "number|{bounds}"},
    {&Integer64, "number|{range}"},
    {&PrefixedNumber, "number"},
    {&Digits, "digits|{bounds}"},
    {&Limit, "limit"},
    {&Within, "digits|from {first} to {second}"},
    {&Word, "word|{words}"},
    {&Selection, "selection"},
    {&Level, "level|{words}, or {bounds}"},
    {&Bytes, "size|in bytes; without a unit: {unit}"},
    {&Kilobytes, "size|held in kilobytes; without a unit: M"},
    {&MinFree, "size|to stay free where {first} is; held in kilobytes; without a unit: M"},

    {&PlainText, "text"},
    {&Signature, "text|of at most {longest} characters; empty: none"},
    {&Date, "date"},

    {&Path, "path"},
    {&File, "file|relative: in EtcDirectory"},
    {&FullFile, "file|with its full path"},
    {&Directory, "directory|relative: under {first}"},
    {&CreatedDirectory, "directory|relative: under {first}; made when it is missing"},
    {&FullDirectory, "directory|with its full path"},
    {&TemplateFolder, "directory|relative: under RootDirectory; empty: none"},

    {&Words, "words|{separators}"},
    {&Names, "names"},
    {&Sets, "names"},
    {&InternalDomainList, "domains|{separators}"},
    {&IpConditionList, "IP addresses|{separators}"},
    {&MailAddresses, R"(mail addresses|separated by ";" or ","; at most MaxAddressList)"},
    {&Servers, "servers"},
    {&ServersAndMarkers, R"(servers|"_MSP_" and "_CMD_" may be among them)"},
    {&UserGroup, "words|{separators}; at most eight"},
};

// What the names mean, each said of the first kind of the name. A number of a right is one of its
// own.
inline constexpr WordsOf<Kind> meanings[] = {
    {&Boolean, "true, yes, on, 1 or false, no, off, 0, in any case."},
    {&Integer, "A decimal number, for permissions, too: 416 is 0640. "
               "Text behind it is overlooked, and without digits it is 0. "
               "A setting without a sign takes a negative number and wraps it."},
    {&PrefixedNumber, "A number; with 0x in front it is hexadecimal, with 0 octal. "
                      "Without digits it is 0."},
    {&Digits, "Decimal digits and nothing else."},
    {&Limit, "Digits from {bounds}; nothing leaves it as it is."},
    {&Word, "One of the words that are listed, in any case."},
    {&Selection, "One of {words}, in any case."},
    {&Level, "A word or a number; the words stand for 9999 (none), 1 (weak) and 0 (strong). "
             "Any other word is read as a number without digits: as 0."},
    {&Bytes, "Numbers of at most nine digits, "
             "each with a unit \"B\", \"K\", \"M\" or \"G\" in either case (1024-based), "
             "added up: \"1G512M\". The last number may lack its unit."},

    {&PlainText, "Any text."},
    {&Date, "A date like 2008/02/29, or nothing for none."},

    {&Path, "The full path of something; \"ov_conf -m\" wants it to exist."},
    {&File, "The path of a file, which need not exist."},
    {&Directory, "A directory that exists. A default is not looked at."},

    {&Words, "Any words."},
    {&Names, "Names, with \":\" between them."},
    {&InternalDomainList, "Mail domains. "
                          "Without any, the registrable domain of the host's own name counts; "
                          "on a host whose name has none, they have to be given."},
    {&IpConditionList, "IPv4 addresses, leading parts of one, "
                       "networks with the mask length behind \"/\", "
                       "or patterns with \"*\"."},
    {&MailAddresses, "Mail addresses, also with a name, \"Taro <taro@example.com>\": "
                     "the bare address is kept."},
    {&Servers, "At most eight of \"host\" or \"host:port\", separated by blanks, "
               "with a port from 1 to 60000; without one it is 25."},
};

inline constexpr WordsOf<Check> check_words[] = {
    {&IsBoolean, "boolean"},
    {&IsNumber, "number (0x in front passes, too, but loads as 0)"},
    {&IsNotNegative, "number, not negative (0x in front passes, too, but loads as 0)"},
    {&AreDigits, "digits: {bounds}"},
    {&AreAllDigits, "digits"},
    {&IsWithin, "digits within the defaults of these limits"},
    {&IsWord, "word: {words}"},
    {&IsLevel, "level: {words}, or {bounds}"},
    {&IsNoneOrNumber, "level: none, or {bounds}"},
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

inline constexpr WordsOf<Form> form_words[] = {
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

// The values that the completion offers, for the kinds and the checks that have some.
inline constexpr WordsOf<Kind> kind_offers[] = {
    {&Boolean, "yes no"},
    {&Flag, "yes no"},
    {&Word, "{choices}"},
    {&Level, "{choices}"},
};
inline constexpr WordsOf<Check> check_offers[] = {
    {&IsBoolean, "yes no"},
    {&IsWord, "{choices}"},
    {&IsLevel, "{choices}"},
    {&IsNoneOrNumber, "none"},
};

// What a table says of a kind, a check or a form; empty when it says nothing.
template <class Record, std::size_t Size>
constexpr std::string_view text_in(const WordsOf<Record> (&table)[Size], const Record& record) {
    const auto* found = std::find_if(std::begin(table), std::end(table),
                                     [&](const auto& row) { return row.record == &record; });
    return found == std::end(table) ? std::string_view() : found->text;
}
constexpr std::string_view words_of(const Kind& kind) {
    return text_in(kind_words, kind);
}
constexpr std::string_view words_of(const Check& check) {
    return text_in(check_words, check);
}
constexpr std::string_view words_of(const Form& form) {
    return text_in(form_words, form);
}
constexpr std::string_view offered_by(const Kind& kind) {
    return text_in(kind_offers, kind);
}
constexpr std::string_view offered_by(const Check& check) {
    return text_in(check_offers, check);
}

constexpr std::string_view name_of(const Kind& kind) {
    return words_of(kind).substr(0, words_of(kind).find('|'));
}
constexpr std::string_view meaning_of(const Kind& kind) {
    const std::string_view own = text_in(meanings, kind);
    const auto* of_name =
        std::find_if(std::begin(meanings), std::end(meanings),
                     [&](const auto& row) { return name_of(*row.record) == name_of(kind); });
    return !own.empty() || of_name == std::end(meanings) ? own : of_name->text;
}
static_assert(std::none_of(std::begin(kind_words), std::end(kind_words),
                           [](const auto& row) { return meaning_of(*row.record).empty(); }),
              "each name of a kind has a meaning");

} // namespace ov::kinds
