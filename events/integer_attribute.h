// Integer attributes of the metadata XML, read exactly as the XML library's
// QueryIntAttribute reads them: leading blanks and a sign accepted, anything
// after the digits ignored, "0x" read as hexadecimal, a value beyond 32 bits
// cut to 32 bits. The result tells a missing attribute (XML_NO_ATTRIBUTE)
// from one that is not an integer (XML_WRONG_ATTRIBUTE_TYPE).
#ifndef EVENTS_INTEGER_ATTRIBUTE_H_
#define EVENTS_INTEGER_ATTRIBUTE_H_

#include <tinyxml2.h>

// The library's reading. It converts with sscanf, which costs more than the
// rest of a segment.
tinyxml2::XMLError LibraryIntAttribute(const tinyxml2::XMLElement& element, const char* name,
                                       int& value);

// The same reading; a value of nothing but up to nine decimal digits, as the
// recorder writes its offsets, is read without sscanf.
tinyxml2::XMLError IntAttribute(const tinyxml2::XMLElement& element, const char* name, int& value);

#endif  // EVENTS_INTEGER_ATTRIBUTE_H_
