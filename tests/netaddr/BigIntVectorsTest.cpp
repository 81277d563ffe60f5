// BigInt against bigint_vectors.txt, written by make_bigint_vectors.py beside it.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

using Texts = std::vector<std::string>;

std::string shown(const BigInt& value) {
  std::string text = value.toStringWithRadix(16);
  std::ranges::transform(text, text.begin(), [](char c) { return c >= 'A' ? char(c | 0x20) : c; });
  return text;
}

/// The value's text, or what stands for its exception.
template <class Call>
std::string outcome(Call call) {
  std::string text;
  std::string thrown = thrownBy([&] { text = shown(call()); });
  std::ranges::replace(thrown, ' ', '_');
  return thrown.empty() ? text : std::string("!").append(thrown, thrown.find(":_") + 2);
}

Texts lucas(const Texts& in) {
  const BigInt n = hex(in[4]);
  const auto terms =
      BigInt::lucasSequence(hex(in[0]), hex(in[1]), hex(in[2]), n, BigInt(), hex(in[3]).intValue());
  return {shown(terms.u), shown(terms.v), shown(terms.qPower)};
}

/// Takes the results of an operation line's operands anew.
const std::map<std::string, std::function<Texts(const Texts&)>> kOperations = {
    {"add",
     [](const Texts& in) -> Texts {
       return {outcome([&] { return hex(in[0]).add(hex(in[1])); })};
     }},
    {"subtract",
     [](const Texts& in) -> Texts {
       return {outcome([&] { return hex(in[0]).subtract(hex(in[1])); })};
     }},
    {"multiply",
     [](const Texts& in) -> Texts {
       return {outcome([&] { return hex(in[0]).multiply(hex(in[1])); })};
     }},
    {"divide",
     [](const Texts& in) -> Texts {
       return {outcome([&] { return hex(in[0]).divide(hex(in[1])); }),
               shown(hex(in[0]).mod(hex(in[1])))};
     }},
    {"bits",
     [](const Texts& in) -> Texts {
       const BigInt a = hex(in[0]);
       const BigInt b = hex(in[1]);
       return {shown(a.bitAnd(b)), shown(a.bitOr(b)), shown(a.xOr(b)), shown(a.bitNot())};
     }},
    {"shift",
     [](const Texts& in) -> Texts {
       const int amount = std::stoi(in[1]);
       return {shown(hex(in[0]).shiftLeft(amount)), shown(hex(in[0]).shiftRight(amount))};
     }},
    {"sqrt", [](const Texts& in) -> Texts { return {shown(hex(in[0]).sqrt())}; }},
    {"gcd", [](const Texts& in) -> Texts { return {shown(hex(in[0]).gcd(hex(in[1])))}; }},
    {"text",
     [](const Texts& in) -> Texts { return {hex(in[0]).toStringWithRadix(std::stoi(in[1]))}; }},
    {"modPow",
     [](const Texts& in) -> Texts { return {shown(hex(in[0]).modPow(hex(in[1]), hex(in[2])))}; }},
    {"jacobi",
     [](const Texts& in) -> Texts {
       return {std::to_string(BigInt::jacobi(hex(in[0]), hex(in[1])))};
     }},
    {"lucas", lucas},
};

TEST(BigIntVectorsTest, AgreesWithPython) {
  std::ifstream file(NETADDR_VECTORS "/bigint_vectors.txt");
  std::map<std::string, int> lines;
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string operation;
    words >> operation;
    Texts operands;
    Texts expected;
    for (std::string word; words >> word && word != "=";) {
      operands.push_back(word);
    }
    for (std::string word; words >> word;) {
      expected.push_back(word);
    }
    EXPECT_EQ(kOperations.at(operation)(operands), expected) << line;
    ++lines[operation];
  }
  EXPECT_EQ(lines.size(), kOperations.size());
}

}  // namespace
}  // namespace quillet
