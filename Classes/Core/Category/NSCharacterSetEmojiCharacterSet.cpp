#include "Classes/Core/Category/NSCharacterSetEmojiCharacterSet.h"

#include "Classes/Core/Category/SystemEmojiText.h"

namespace zqcore {

NSCharacterSet zq_emojiCharacterSet() {
    return NSCharacterSet::characterSetWithCharactersInString(kSystemEmojiText);
}

}  // namespace zqcore
