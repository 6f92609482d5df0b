#include "events/integer_attribute.h"

#include <cctype>
#include <cstdint>
#include <cstdlib>

namespace {

// Nine digits or fewer cannot leave the range of int, however read.
constexpr int kPlainDigits = 9;

// True, with the value, when `text` is one to nine decimal digits and
// nothing else.
bool PlainDecimal(const char* text, int& value) {
  int result = 0;
  int length = 0;
  for (; text[length] >= '0' && text[length] <= '9'; ++length) {
    if (length == kPlainDigits) return false;
    result = result * 10 + (text[length] - '0');
  }
  if (length == 0 || text[length] != '\0') return false;
  value = result;
  return true;
}

}  // namespace

// The library converts with sscanf, as wide as the C library's long: a
// 64-bit host reads a value beyond 32 bits whole and cuts it to 32 bits, a
// 32-bit recorder would stop at the limit. Where long is that narrow, an
// accepted value is read again at 64 bits and cut the same way, so that
// event sizes do not depend on the machine.
tinyxml2::XMLError LibraryIntAttribute(const tinyxml2::XMLElement& element, const char* name,
                                       int& value) {
  const tinyxml2::XMLError result = element.QueryIntAttribute(name, &value);
  if (sizeof(long) >= sizeof(int64_t) || result != tinyxml2::XML_SUCCESS) {
    return result;
  }
  // The library read hexadecimal after a "0x" (blanks before it allowed),
  // decimal otherwise; its text is known to convert.
  const char* digits = element.Attribute(name);
  while (static_cast<unsigned char>(*digits) < 128 && std::isspace(*digits)) ++digits;
  const bool hexadecimal = digits[0] == '0' && (digits[1] == 'x' || digits[1] == 'X');
  const uint64_t wide = hexadecimal ? std::strtoull(digits, nullptr, 16)
                                    : static_cast<uint64_t>(std::strtoll(digits, nullptr, 10));
  value = static_cast<int>(static_cast<uint32_t>(wide));
  return result;
}

tinyxml2::XMLError IntAttribute(const tinyxml2::XMLElement& element, const char* name, int& value) {
  const tinyxml2::XMLAttribute* attribute = element.FindAttribute(name);
  if (attribute == nullptr) {
    return tinyxml2::XML_NO_ATTRIBUTE;
  }
  if (PlainDecimal(attribute->Value(), value)) {
    return tinyxml2::XML_SUCCESS;
  }
  return LibraryIntAttribute(element, name, value);
}
