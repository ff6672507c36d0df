// message_pages.h: the pages of docs/messages/, one for each code, from the table of messages.
#ifndef TAVELL_KIT_MESSAGE_PAGES_H
#define TAVELL_KIT_MESSAGE_PAGES_H

#include <string>
#include <utility>
#include <vector>

namespace kit
{

/// File name and Markdown text of every page: README.md, the index by area, then one page for each code in
/// the order of the table.
std::vector<std::pair<std::string, std::string>> messagePages();

}  // namespace kit

#endif
