#include "events/integer_attribute.h"

#include <gtest/gtest.h>
#include <tinyxml2.h>

#include <sstream>
#include <string>

namespace {

// Reads attribute `a` of an element whose attribute text is `text`, both
// ways, starting from the same value.
void ExpectSameReading(const std::string& text) {
  tinyxml2::XMLDocument document;
  const std::string xml = "<segment a=\"" + text + "\"/>";
  ASSERT_EQ(tinyxml2::XML_SUCCESS, document.Parse(xml.c_str())) << text;
  const tinyxml2::XMLElement& segment = *document.FirstChildElement();
  int library = -7;
  int fast = -7;
  EXPECT_EQ(LibraryIntAttribute(segment, "a", library), IntAttribute(segment, "a", fast)) << text;
  EXPECT_EQ(library, fast) << text;
  int missingLibrary = -7;
  int missingFast = -7;
  EXPECT_EQ(LibraryIntAttribute(segment, "b", missingLibrary),
            IntAttribute(segment, "b", missingFast));
  EXPECT_EQ(tinyxml2::XML_NO_ATTRIBUTE, IntAttribute(segment, "b", missingFast));
  EXPECT_EQ(missingLibrary, missingFast);
}

TEST(IntegerAttribute, ReadAsTheLibraryReadsIt) {
  // Attribute texts between bars; the empty one included.
  std::istringstream texts(
      "0|7|00|012|123456789|999999999|1000000000|2147483647|2147483648|4294967295|4294967296|"
      "4294967301|99999999999999999999|-1|-2147483648|-2147483649|+5| 42|42 |\t3|116abc|abc|| |"
      "0x10|0X1f| 0x10|0x|0xg|0xffffffff|0x100000000|1e3|1.5|--1|+-1|\xc3\xa9|5\xc3\xa9|"
      "0000000001|000000001");
  for (std::string text; std::getline(texts, text, '|');) ExpectSameReading(text);
}

TEST(IntegerAttribute, EveryCountOfDigits) {
  std::string digits;
  for (int length = 1; length <= 12; ++length) {
    digits += static_cast<char>('0' + length % 10);
    ExpectSameReading(digits);
    ExpectSameReading(std::string(static_cast<size_t>(length), '9'));
    ExpectSameReading("-" + digits);
  }
}

}  // namespace
