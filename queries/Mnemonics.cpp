#include "queries/Mnemonics.h"

#include <span>
#include <string_view>

namespace quillet {

namespace {

struct Mnemonic {
  std::uint16_t value;
  std::string_view text;
};

constexpr Mnemonic kTypes[] = {
    {1, "A"},       {2, "NS"},      {5, "CNAME"},     {6, "SOA"},         {12, "PTR"},
    {13, "HINFO"},  {15, "MX"},     {16, "TXT"},      {17, "RP"},         {18, "AFSDB"},
    {24, "SIG"},    {25, "KEY"},    {28, "AAAA"},     {29, "LOC"},        {33, "SRV"},
    {35, "NAPTR"},  {36, "KX"},     {37, "CERT"},     {39, "DNAME"},      {41, "OPT"},
    {43, "DS"},     {44, "SSHFP"},  {45, "IPSECKEY"}, {46, "RRSIG"},      {47, "NSEC"},
    {48, "DNSKEY"}, {49, "DHCID"},  {50, "NSEC3"},    {51, "NSEC3PARAM"}, {52, "TLSA"},
    {53, "SMIMEA"}, {55, "HIP"},    {59, "CDS"},      {60, "CDNSKEY"},    {61, "OPENPGPKEY"},
    {62, "CSYNC"},  {63, "ZONEMD"}, {64, "SVCB"},     {65, "HTTPS"},      {99, "SPF"},
    {249, "TKEY"},  {250, "TSIG"},  {251, "IXFR"},    {252, "AXFR"},      {255, "ANY"},
    {256, "URI"},   {257, "CAA"},
};

constexpr Mnemonic kRcodes[] = {
    {0, "NOERROR"},  {1, "FORMERR"},  {2, "SERVFAIL"},   {3, "NXDOMAIN"}, {4, "NOTIMP"},
    {5, "REFUSED"},  {6, "YXDOMAIN"}, {7, "YXRRSET"},    {8, "NXRRSET"},  {9, "NOTAUTH"},
    {10, "NOTZONE"}, {16, "BADVERS"}, {23, "BADCOOKIE"},
};

std::string mnemonicIn(std::span<const Mnemonic> known, std::uint16_t value, const char* unknown) {
  for (const auto& mnemonic : known) {
    if (mnemonic.value == value) {
      return std::string(mnemonic.text);
    }
  }
  return unknown + std::to_string(value);
}

}  // namespace

std::string typeMnemonic(std::uint16_t type) { return mnemonicIn(kTypes, type, "TYPE"); }

std::string rcodeMnemonic(std::uint16_t rcode) { return mnemonicIn(kRcodes, rcode, "RCODE"); }

}  // namespace quillet
