// Text for the XML description files: names from the Project's byte buffers made valid UTF-8
// and escaped for attribute values, and sample file names every file system takes.
#pragma once

#include <string>

namespace tg {

// `text` as UTF-8: kept as it is when it already is valid UTF-8, otherwise read as Latin-1
// (the encoding older Projects store names in).
std::string utf8FromName(const std::string& text);

// `text` with &, <, >, " and ' escaped, so that it can sit in an element or attribute, and
// control characters (which XML 1.0 does not allow) turned into blanks. Any encoding.
std::string escapeXml(const std::string& text);

// `utf8FromName(text)` escaped for an XML attribute value.
std::string xmlAttribute(const std::string& text);

// A file name made of ASCII letters, digits, blanks and "#-_.()" only; every other byte
// becomes '_', so the name written into a description is the name on every disk.
std::string portableFileName(const std::string& text);

} // namespace tg
