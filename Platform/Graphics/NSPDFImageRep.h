#pragma once

#include <functional>
#include <memory>

#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Graphics/NSImageRep.h"

struct _cairo_surface;

namespace zqcore::platform {

/// A form of an image that was drawn once and kept as a recording: sharp at every scale, and a PDF file of
/// one page. Threads: one at a time. Failure: a size without area gives a null pointer.
class ZQ_EXPORT NSPDFImageRep final : public NSImageRep {
  public:
    using DrawFunction = std::function<void(CGContext&)>;

    /// Calls `draw` once, on a context `size` points large, its origin in the lower left corner. What it
    /// draws of images is kept by reference until the recording goes.
    [[nodiscard]] static std::shared_ptr<NSPDFImageRep> make(CGSize size, const DrawFunction& draw);

    /// The file, written anew at each call.
    [[nodiscard]] Data PDFRepresentation() const;
    void draw(CGContext& context, const CGRect& rect) const override;

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSPDFImageRep(CGSize size, std::shared_ptr<_cairo_surface> recording)
        : NSImageRep(size), page_(size), recording_(std::move(recording)) {}

    CGSize page_;
    std::shared_ptr<_cairo_surface> recording_;
};

}  // namespace zqcore::platform
