#include "Platform/Foundation/JSON/JSONError.h"

#include <vector>

namespace zqcore::platform {

std::string JSONError::description() const {
    std::string text = path;
    if (!text.empty()) text += ": ";
    text += reason;
    if (offset > 0) text += " (byte " + std::to_string(offset) + ")";
    return text;
}

std::string describe(const JSONPathNode* node) {
    std::vector<const JSONPathNode*> steps;
    for (; node; node = node->parent) steps.push_back(node);
    std::string text;
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        if (!(*step)->key.data()) {
            text += '[' + std::to_string((*step)->index) + ']';
        } else if (!(*step)->key.empty()) {
            if (!text.empty()) text += '.';
            text += (*step)->key;
        }
    }
    return text;
}

}  // namespace zqcore::platform
