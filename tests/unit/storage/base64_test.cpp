#include "storage/base64.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>

#include "base64_reference.h"

namespace tavira::test {
namespace {

class CInputs {
 public:
  char Character() { return kBase64Alphabet[random_() % kBase64Alphabet.size()]; }
  /** Any byte outside the alphabet; many are line breaks. */
  char Junk() {
    for (;;) {
      const char c = OneIn(3) ? "\r\n"[OneIn(2)] : static_cast<char>(random_() >> 8);
      if (kBase64Alphabet.find(c) == kBase64Alphabet.npos) {
        return c;
      }
    }
  }
  bool OneIn(unsigned n) { return random_() % n == 0; }

  /** `length` bytes, each of which `is_junk` may turn into junk by its place. */
  std::string Make(std::size_t length, const std::function<bool(std::size_t)>& is_junk) {
    std::string text(length, '\0');
    for (std::size_t i = 0; i < length; ++i) {
      text[i] = is_junk(i) ? Junk() : Character();
    }
    return text;
  }

 private:
  std::minstd_rand random_{20240229};
};

TEST(Base64Test, KnownTexts) {
  const struct {
    std::string_view text;
    std::string_view bytes;
  } cases[] = {
      {"", ""},
      {"TWFu", "Man"},
      {"TWE=", "Ma"},
      {"TQ==", "M"},
      {"TWE", "Ma"},
      {"TQ", "M"},
      {"TWFuT", "Man"},  // a single character left over carries no whole byte
      {"TW\r\nFu", "Man"},
      {"TWF-\nuTWFuTWFu", "ManManMan"},
      {"TQ==TWFu", "M\x04\xD6\x16"},  // the filler ends nothing: "TQTW" and "Fu"
      {"=T-W F:u", "Man"},
      {"====", ""},
  };
  for (const auto& [text, bytes] : cases) {
    EXPECT_EQ(bytes, DecodeBase64(text)) << text;
  }
  const std::string all = DecodeBase64(kBase64Alphabet);
  ASSERT_EQ(48U, all.size());
  EXPECT_EQ(std::string("\x00\x10\x83", 3), all.substr(0, 3));
  EXPECT_EQ("\xFB\xFE\xFF\xBF"[0], DecodeBase64("+/7/")[0]);
}

// (On any input, in one piece or two: fuzz/base64.cpp.)
TEST(Base64Test, AgreesWithTheOneCharacterReferenceOnEveryKindOfInput) {
  CInputs inputs;
  const std::vector<std::pair<const char*, std::function<bool(std::size_t)>>> kinds{
      {"clean", [](std::size_t) { return false; }},
      {"lines of 76", [](std::size_t i) { return i % 78 >= 76; }},
      {"lines of 61", [](std::size_t i) { return i % 62 == 61; }},
      {"sparse junk", [&](std::size_t) { return inputs.OneIn(40); }},
      {"half junk", [&](std::size_t) { return inputs.OneIn(2); }},
      {"dense junk", [&](std::size_t) { return !inputs.OneIn(50); }},
      {"all junk", [](std::size_t) { return true; }},
      {"junk runs", [](std::size_t i) { return i % 3000 > 1000; }},
      {"three in a group", [](std::size_t i) { return i % 13 > 4; }},
  };
  std::vector<std::size_t> lengths{128, 132, 133, 1021, 4095, 4096, 4097, 4100, 4224, 4229, 20011};
  for (std::size_t length = 0; length < 90; ++length) {
    lengths.push_back(length);
  }
  for (const auto& [kind, is_junk] : kinds) {
    for (const std::size_t length : lengths) {
      const std::string text = inputs.Make(length, is_junk);
      ASSERT_EQ(DecodeBase64OneByOne(text), DecodeBase64(text)) << kind << ", " << length << " bytes";
    }
  }
}

}  // namespace
}  // namespace tavira::test
