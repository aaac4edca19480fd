#include "Platform/Foundation/Text/Linux/FoldedText.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "Platform/Foundation/Text/CaseMapping.h"
#include "Platform/Foundation/Text/ComposedCharacters.h"
#include "Platform/Foundation/Text/NSStringSearch.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {
namespace {

/// Fullwidth and halfwidth forms by their plain ones; everything else as it is.
void plainWidths(icu::UnicodeString& text, UErrorCode& status) {
    const auto* compatible = icu::Normalizer2::getNFKDInstance(status);
    if (U_FAILURE(status)) return;
    icu::UnicodeString plain;
    for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        const UChar32 scalar = text.char32At(i);
        icu::UnicodeString decomposed;
        if (scalar >= 0xFF01 && scalar <= 0xFFEE && compatible->getDecomposition(scalar, decomposed)) {
            plain.append(decomposed);
        } else {
            plain.append(scalar);
        }
    }
    text = plain;
}

}  // namespace

FoldedText::FoldedText(std::string_view text, unsigned options) {
    scalars_.reserve(text.size());
    places_.reserve(text.size());
    const bool literal = (options & NSLiteralSearch) != 0;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end =
            literal ? begin + firstScalar(text.substr(begin)).length : composedSequenceEnd(text, begin);
        append(text.substr(begin, end - begin), begin, options);
        begin = end;
    }
}

void FoldedText::append(std::string_view character, std::size_t begin, unsigned options) {
    const std::size_t first = scalars_.size();
    if (character.size() == 1 && isASCII(character)) {
        const char c = options & NSCaseInsensitiveSearch ? asciiLower(character[0]) : character[0];
        scalars_.push_back(static_cast<unsigned char>(c));
    } else {
        UErrorCode status = U_ZERO_ERROR;
        auto text = icu::UnicodeString::fromUTF8(
            icu::StringPiece(character.data(), static_cast<std::int32_t>(character.size())));
        if (options & NSWidthInsensitiveSearch) plainWidths(text, status);
        if (options & NSCaseInsensitiveSearch) text.foldCase();
        if (!(options & NSLiteralSearch)) {
            const auto* decomposing = icu::Normalizer2::getNFDInstance(status);
            if (U_SUCCESS(status)) text = decomposing->normalize(text, status);
        }
        for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
            const UChar32 scalar = text.char32At(i);
            const bool mark = u_charType(scalar) == U_NON_SPACING_MARK;
            if (mark && (options & NSDiacriticInsensitiveSearch)) continue;
            scalars_.push_back(static_cast<char32_t>(scalar));
        }
    }
    places_.resize(scalars_.size(), {kNoPlace, kNoPlace});
    if (scalars_.size() == first) return;
    places_[first].begin = begin;
    places_.back().end = begin + character.size();
}

}  // namespace zqcore::platform
