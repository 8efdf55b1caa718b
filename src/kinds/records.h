// What is done with values: tables of the forms, the checks and the kinds, each row with the types
// of the settings that it is for. What the kinds mean, and what a row of the catalogue says of its
// value, is in kinds.h.
#pragma once

#include "kinds/rule.h"

namespace ov::kinds {

using Loads = Verdict(const Loading&);
using Checks = bool(const Value&);
using Shows = std::optional<std::string>(const Value&);

// clang-format off

// Numbers: numbers.cpp

Shows show_number, show_boolean, show_word, show_level, show_byte_size, show_hex_code, show_hex,
    show_access;
inline constexpr Form AsNumber     {Numbers, show_number};
inline constexpr Form AsTrueOrFalse{Numbers, show_boolean};
inline constexpr Form AsWord       {Numbers, show_word};
inline constexpr Form AsLevel      {Numbers, show_level};
inline constexpr Form AsByteSize   {Numbers, show_byte_size};
inline constexpr Form AsHexCode    {Numbers, show_hex_code};
inline constexpr Form AsHex        {Numbers, show_hex};
inline constexpr Form AsAccess     {Numbers, show_access};

Checks is_boolean, is_based_number, are_digits, are_all_digits, is_within, is_word, is_level,
    is_none_or_number, is_bytes, is_kilobytes;
inline constexpr Check IsBoolean     {Numbers, is_boolean};
inline constexpr Check IsNumber      {Numbers, is_based_number};
inline constexpr Check IsNotNegative {Numbers, is_based_number};
inline constexpr Check AreDigits     {Numbers, are_digits};
inline constexpr Check AreAllDigits  {Numbers, are_all_digits};
inline constexpr Check IsWithin      {Numbers, is_within};
inline constexpr Check IsWord        {Numbers, is_word};
inline constexpr Check IsLevel       {Numbers, is_level};
inline constexpr Check IsNoneOrNumber{Numbers, is_none_or_number};
inline constexpr Check IsBytes       {Numbers, is_bytes};
inline constexpr Check IsKilobytes   {Numbers, is_kilobytes};

Loads load_boolean, load_integer, load_integer64, load_number, load_digits, load_limit,
    load_within, load_word, load_level, load_bytes, load_kilobytes, load_min_free;
inline constexpr Kind Boolean       {Numbers, load_boolean, IsBoolean, AsTrueOrFalse};
inline constexpr Kind Flag          {Numbers, load_boolean, IsBoolean, AsNumber};
inline constexpr Kind Integer       {Numbers, load_integer, NoCheck, AsNumber};
inline constexpr Kind Integer64     {LargeNumbers, load_integer64, NoCheck, AsNumber};
inline constexpr Kind PrefixedNumber{Numbers, load_number, IsNumber, AsNumber};
inline constexpr Kind Digits        {Numbers, load_digits, AreDigits, AsNumber};
inline constexpr Kind Limit         {Numbers, load_limit, NoCheck, AsNumber};
inline constexpr Kind Within        {Numbers, load_within, IsWithin, AsNumber};
inline constexpr Kind Word          {Numbers, load_word, IsWord, AsWord};
inline constexpr Kind Selection     {Numbers, load_word, NoCheck, AsWord};
inline constexpr Kind Level         {Numbers, load_level, IsLevel, AsLevel};
inline constexpr Kind Bytes         {Numbers, load_bytes, IsBytes, AsByteSize};
inline constexpr Kind Kilobytes     {Numbers, load_kilobytes, IsKilobytes, AsNumber};
inline constexpr Kind MinFree       {Numbers, load_min_free, IsKilobytes, AsNumber};

// Texts: texts.cpp

Shows show_text, show_lower_bound, show_upper_bound;
inline constexpr Form AsText      {Texts, show_text};
inline constexpr Form AsLowerBound{Texts, show_lower_bound};
inline constexpr Form AsUpperBound{Texts, show_upper_bound};

Checks is_anything, is_one_word;
inline constexpr Check IsAnything{AnyType, is_anything};
inline constexpr Check IsOneWord {Texts, is_one_word};

Loads load_text, load_signature, load_date;
inline constexpr Kind PlainText{Texts, load_text, NoCheck, AsText};
inline constexpr Kind Signature{Texts, load_signature, NoCheck, AsText};
inline constexpr Kind Date     {Texts, load_date, NoCheck, NoForm};

// Paths: paths.cpp. What a kind does when the file lacks the key stands last.

Checks is_command, is_program, is_list_program, is_existing_directory, is_queue_directory,
    is_directory_under, is_directory_under_root, are_directories, are_devices, is_template_file,
    is_keyword_set, is_mime_type_set;
inline constexpr Check IsProgram           {Texts, is_program};
inline constexpr Check IsCommand           {Texts, is_command};
inline constexpr Check IsListProgram       {Texts, is_list_program};
inline constexpr Check IsExistingDirectory {Texts, is_existing_directory};
inline constexpr Check IsQueueFolder       {Texts, is_queue_directory};
inline constexpr Check IsDirectoryUnder    {Texts, is_directory_under};
inline constexpr Check IsDirectoryUnderRoot{Texts, is_directory_under_root};
inline constexpr Check AreDirectories      {Texts, are_directories};
inline constexpr Check AreDevices          {Texts, are_devices};
inline constexpr Check IsTemplateFile      {Texts, is_template_file};
inline constexpr Check IsKeywordSet        {Texts, is_keyword_set};
inline constexpr Check IsMimeTypeSet       {Texts, is_mime_type_set};

Loads load_path, load_file, load_full_file, load_directory, load_created_directory,
    load_full_directory, load_template_directory;
Loads default_file, default_directory, default_template_directory;
inline constexpr Kind Path{Texts, load_path, NoCheck, AsText};
inline constexpr Kind File{Texts, load_file, NoCheck, AsText, default_file};
inline constexpr Kind FullFile{Texts, load_full_file, NoCheck, AsText, default_file};
inline constexpr Kind Directory{Texts, load_directory, NoCheck, AsText, default_directory};
inline constexpr Kind CreatedDirectory{Texts, load_created_directory, NoCheck, AsText,
                                       default_directory};
inline constexpr Kind FullDirectory{Texts, load_full_directory, NoCheck, AsText};
inline constexpr Kind TemplateFolder{Texts, load_template_directory, NoCheck, NoForm,
                                     default_template_directory};

// Lists: lists.cpp

Shows show_names, show_internal_domains, show_conditions, show_addresses, show_user_group;
inline constexpr Form AsNames          {WordLists, show_names};
inline constexpr Form AsInternalDomains{WordLists, show_internal_domains};
inline constexpr Form AsConditions     {IpLists, show_conditions};
inline constexpr Form AsAddresses      {AddressLists, show_addresses};
inline constexpr Form AsUserGroup      {ServerLists, show_user_group};

Checks are_domains, are_networks, are_addresses, are_servers, is_host_port;
inline constexpr Check AreDomains  {WordLists, are_domains};
inline constexpr Check AreNetworks {IpLists, are_networks};
inline constexpr Check AreAddresses{AddressLists, are_addresses};
inline constexpr Check AreServers  {Texts, are_servers};
inline constexpr Check IsHostPort  {Texts, is_host_port};

Loads load_words, load_sets, load_internal_domains, load_ip_conditions, load_addresses,
    load_servers, load_servers_and_markers, load_user_group;
inline constexpr Kind Words{WordLists, load_words, NoCheck, NoForm};
inline constexpr Kind Names{WordLists, load_words, NoCheck, AsNames};
inline constexpr Kind Sets{WordLists, load_sets, NoCheck, NoForm};
inline constexpr Kind InternalDomainList{WordLists, load_internal_domains, AreDomains,
                                         AsInternalDomains, load_internal_domains};
inline constexpr Kind IpConditionList{IpLists, load_ip_conditions, AreNetworks, AsConditions};
inline constexpr Kind MailAddresses{AddressLists, load_addresses, AreAddresses, AsAddresses};
inline constexpr Kind Servers{Texts, load_servers, NoCheck, AsText};
inline constexpr Kind ServersAndMarkers{Texts, load_servers_and_markers, AreServers, AsText};
inline constexpr Kind UserGroup{ServerLists, load_user_group, NoCheck, AsUserGroup};

// clang-format on

} // namespace ov::kinds
