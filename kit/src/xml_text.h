// xml_text.h: texts and numbers inside XML documents.
#ifndef TAVELL_KIT_XML_TEXT_H
#define TAVELL_KIT_XML_TEXT_H

#include <string>
#include <string_view>

namespace kit
{

/// A text as the content of an XML element or of an attribute between double quotes: markup characters, tabs
/// and line ends as references. What XML 1.0 (production 2, Char) cannot hold at all, control characters,
/// U+FFFE, U+FFFF and bytes that are no UTF-8, becomes the replacement character U+FFFD.
std::string xmlText(std::string_view text);

/// The same characters as UTF-8 without any escaping, for bytes that are written as numbers.
std::string xmlCharacters(std::string_view text);

/// Appends a number in the shortest form that reads back as the same double; "nan" for what is not finite.
void appendNumber(std::string& out, double value);

}  // namespace kit

#endif
