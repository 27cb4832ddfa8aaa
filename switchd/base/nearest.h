// What somebody meant who wrote a word that nobody knows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace stpswitch {

// "; did you mean 'show'?" with the known word that differs least, by letters that are missing, wrong, too
// many or swapped. Empty where all differ in more than a third of the word; of a key such as "port.3.link",
// of its last part.
std::string suggestion(std::string_view word, const std::vector<std::string> &known);

}  // namespace stpswitch
