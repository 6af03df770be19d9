#include <iostream>
#include <stdexcept>
#include <string>

#include "model/lineup_editor.h"

namespace lineup {

void LineupEditor::runTypeMode(const std::string& typeWord) {
  fetchHeadendConfig();
  try {
    dispatchCommand("type " + typeWord, true);
    commitHeadendConfig();
    std::cout << "Headend type set to: " << typeWord << std::endl;
  } catch (const std::runtime_error& error) {
    std::cout << error.what() << std::endl;
  }
}

}  // namespace lineup
