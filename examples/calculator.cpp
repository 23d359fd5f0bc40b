// SPDX-License-Identifier: MIT
// A parser made from `ZelParser`: one sum on each line, read from a text in memory and then from
// the file named on the command line.
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "ZelParser.h"

// sum = product {+ product};  product = value {* value};  value = digits | - value | ( sum )
class Calculator : public ZelParser {
 public:
  // Prints the value of each line, up to the first that is not a sum.
  bool Parse(void* context) override {
    std::printf("%s:", static_cast<const char*>(context));
    for (Next(); sound && token != nullptr; Next()) {
      if (token->kind == NewLineToken) continue;  // a blank line
      const long value = Sum();
      sound = sound && (token == nullptr || token->kind == NewLineToken);
      if (sound) std::printf(" %ld", value);
    }
    std::puts(sound ? "" : " error");
    return sound;
  }

 private:
  void Next() {
    do token = GetToken();
    while (token != nullptr && token->kind == WhiteSpaceToken);
  }

  bool Accept(char mark) {
    const bool here = token != nullptr && token->kind == PunctuationToken && token->text[0] == mark;
    if (here) Next();
    return here;
  }

  long Sum() {
    long value = Product();
    while (Accept('+')) value += Product();
    return value;
  }

  long Product() {
    long value = Value();
    while (Accept('*')) value *= Value();
    return value;
  }

  long Value() {
    if (Accept('-')) return -Value();
    if (Accept('(')) {
      const long value = Sum();
      sound = Accept(')') && sound;
      return value;
    }
    sound = sound && token != nullptr && token->kind == DigitConstantToken;
    if (!sound) return 0;
    const long value = std::strtol(token->text.c_str(), nullptr, 10);
    Next();
    return value;
  }

  const ZelLexToken* token = nullptr;
  bool sound = true;
};

int main(int argc, char** argv) {
  char name[] = "text";
  Calculator().ParseBuffer("2 * (3 + 4)\n10 + -3", name);
  Calculator().ParseBuffer("1 + \n", name);
  if (argc < 2) return 0;
  try {
    return Calculator().ParseFile(argv[1], argv[1]) ? 0 : 1;
  } catch (const std::exception&) {
    std::printf("%s: cannot be opened\n", argv[1]);
    return 1;
  }
}
