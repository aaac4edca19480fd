#include "Platform/Foundation/Text/Character.h"

#include "Platform/Foundation/Text/Linux/CharacterBreaks.h"

namespace zqcore::platform {

std::string_view CharacterCursor::nextByRules() {
    if (nextBreak_ == breakCount_) findBreaks();
    const std::size_t begin = position_;
    position_ = breaks_[nextBreak_++];
    return text_.substr(begin, position_ - begin);
}

void CharacterCursor::findBreaks() {
    if (position_ >= stretchEnd_) {
        std::size_t end = position_ + 1;
        while (end < text_.size() && !(isASCIIAt(end - 1) && isASCIIAt(end) && text_[end - 1] != '\r')) ++end;
        stretchEnd_ = end;
    }
    // Starting at a boundary is as good as starting at the beginning: no rule looks further back than into
    // its own character.
    breakCount_ = static_cast<std::uint32_t>(
        findCharacterBreaks(text_.substr(position_, stretchEnd_ - position_), breaks_));
    for (std::uint32_t i = 0; i < breakCount_; ++i) breaks_[i] += position_;
    nextBreak_ = 0;
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (CharacterCursor cursor(text); cursor.next();) ++count;
    return count;
}

}  // namespace zqcore::platform
