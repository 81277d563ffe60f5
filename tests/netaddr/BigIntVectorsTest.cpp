// BigInt against bigint_vectors.txt, written by make_bigint_vectors.py beside it.

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "netaddr/BigInt.h"
#include "tests/netaddr/BigIntSamples.h"
#include "tests/netaddr/Thrown.h"

namespace quillet {
namespace {

using Numbers = std::vector<BigInt>;
using Operation = Numbers (*)(const Numbers&);

Numbers bits(const Numbers& in) {
  return {in[0].bitAnd(in[1]), in[0].bitOr(in[1]), in[0].xOr(in[1]), in[0].bitNot()};
}

Numbers shift(const Numbers& in) {
  const int amount = in[1].intValue();
  return {in[0].shiftLeft(amount), in[0].shiftRight(amount)};
}

Numbers lucas(const Numbers& in) {
  const auto [u, v, qPower] =
      BigInt::lucasSequence(in[0], in[1], in[2], in[4], BigInt(), in[3].intValue());
  return {u, v, qPower};
}

const std::map<std::string, Operation> kOperations = {
    {"add", [](const Numbers& in) { return Numbers{in[0].add(in[1])}; }},
    {"subtract", [](const Numbers& in) { return Numbers{in[0].subtract(in[1])}; }},
    {"multiply", [](const Numbers& in) { return Numbers{in[0].multiply(in[1])}; }},
    {"divide", [](const Numbers& in) { return Numbers{in[0].divide(in[1])}; }},
    {"mod", [](const Numbers& in) { return Numbers{in[0].mod(in[1])}; }},
    {"modPow", [](const Numbers& in) { return Numbers{in[0].modPow(in[1], in[2])}; }},
    {"bits", bits},
    {"shift", shift},
    {"lucas", lucas},
};

/// The results as text, or the exception thrown.
std::string outcome(Operation operation, const Numbers& operands) {
  std::string text;
  const std::string thrown = thrownBy([&] {
    for (const BigInt& result : operation(operands)) {
      text.append(" ").append(result.toStringWithRadix(16));
    }
  });
  return thrown.empty() ? text : " " + thrown;
}

TEST(BigIntVectorsTest, AgreesWithPython) {
  std::ifstream file(NETADDR_VECTORS "/bigint_vectors.txt");
  std::map<std::string, int> lines;
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string operation;
    words >> operation;
    Numbers operands;
    for (std::string word; words >> word && word != "=";) {
      operands.push_back(hex(word));
    }
    std::string expected;
    std::getline(words, expected);
    EXPECT_EQ(outcome(kOperations.at(operation), operands), expected) << line;
    ++lines[operation];
  }
  EXPECT_EQ(lines.size(), kOperations.size());
}

}  // namespace
}  // namespace quillet
