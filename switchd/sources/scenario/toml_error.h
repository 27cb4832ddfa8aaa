// What is wrong with a file that is not TOML, in words for whoever wrote it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace stpswitch {

// `complaint` is the parser's, about the line with this number in the text.
std::string explain_toml_error(std::string_view complaint, std::string_view text, uint32_t line_number);

}  // namespace stpswitch
