#pragma once

#include <expected>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"
#include "Platform/Foundation/NSURL.h"

namespace zqcore::platform {

// Uniform type identifiers: names of kinds of files, each of which belongs to broader ones ("public.png" to
// "public.image" and so up to "public.item"). The common ones stand in a table of ours; for the rest the
// shared MIME database tells kind and kinship, if it is installed. Content is never looked at. Threads: any.
// Failure: as each tells.

/// The type of what lies at a local file URL, a final link not followed: "public.folder", "public.symlink",
/// or by the extension, in any letter case. An extension that nobody knows gives a dynamic type ("dyn." and
/// more), which belongs to "public.data". Fails for what isn't there, and for a URL of another kind.
[[nodiscard]] ZQ_EXPORT std::expected<std::string, NSError> typeIdentifierForURL(const NSURL& url);

/// Whether `identifier` is `conformsTo` or of its kind. Letter case doesn't count. False for unknown ones.
[[nodiscard]] ZQ_EXPORT bool UTTypeConformsTo(std::string_view identifier, std::string_view conformsTo);

/// The type that an extension without point stands for.
[[nodiscard]] ZQ_EXPORT std::string typeIdentifierForExtension(std::string_view extension);

}  // namespace zqcore::platform
