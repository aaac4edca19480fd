#pragma once

#include <string>

namespace demo {

/// Shows the main window with a line of text, in front of the others; one that is open already changes its
/// text. Where the desktop has no display it does nothing but write a line into the log. Any thread.
void showMainWindow(std::string line);

}  // namespace demo
