#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

class CGContext;
class CGImage;
class NSColor;
class NSImageRep;
struct NSImageFocus;

/// An image: a size in points and the forms (representations) it can be shown in. One that comes from files
/// reads them when its forms or its size are first asked for.
/// Threads: one at a time; one that comes from files may be named and passed about on any.
/// Lifetime: shared. Failure: makers give a null pointer; a file that is gone meanwhile gives no form.
/// Linking: finding images by name needs the core library alone, all else the interface library.
class ZQ_EXPORT NSImage final : public NSObject {
  public:
    /// One file of the image, `scale` pixels a point.
    struct File {
        std::string path;
        int scale = 1;
    };
    using DrawingHandler = std::function<bool(const CGRect& destination)>;

    // The core library.

    /// The image of that name among the main bundle's resources, or a null pointer.
    [[nodiscard]] static std::shared_ptr<NSImage> imageNamed(std::string_view name);
    /// The image `name` in a folder, or a null pointer: NAME.EXT, NAME@2x.EXT and NAME@3x.EXT of the first
    /// known extension that is there. The name may carry an extension itself.
    [[nodiscard]] static std::shared_ptr<NSImage> imageInFolder(const std::string& folder,
                                                                std::string_view name);

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    /// By rising scale; empty for an image that wasn't found by name.
    [[nodiscard]] const std::vector<File>& files() const noexcept { return files_; }
    /// The file that serves best for a screen of `scale`: the smallest that is large enough, else the
    /// largest. Only for an image that has files.
    [[nodiscard]] const File& bestFile(double scale) const noexcept;
    /// The encoded bytes of a file of the image.
    [[nodiscard]] static std::optional<Data> encodedBytes(const File& file);

    /// Whether only the alpha counts, which views show in their tint. True from the start for names that end
    /// in "Template".
    [[nodiscard]] bool isTemplate() const noexcept { return isTemplate_; }
    void setTemplate(bool isTemplate) noexcept { isTemplate_ = isTemplate; }

    // The interface library.

    /// Without forms.
    [[nodiscard]] static std::shared_ptr<NSImage> make(CGSize size = {});
    /// One form of the image's pixels. A size without area means one point a pixel.
    [[nodiscard]] static std::shared_ptr<NSImage> make(const std::shared_ptr<const CGImage>& image,
                                                       CGSize size = {});
    /// From a file's bytes.
    [[nodiscard]] static std::shared_ptr<NSImage> make(const Data& data);
    [[nodiscard]] static std::shared_ptr<NSImage> makeWithContentsOfFile(const std::string& path);
    /// Drawn by `handler`, anew each time it is shown, with the graphics context current, y downwards if
    /// `flipped`.
    [[nodiscard]] static std::shared_ptr<NSImage> imageWithSize(CGSize size, bool flipped,
                                                                DrawingHandler handler);

    /// In points.
    [[nodiscard]] CGSize size() const;
    void setSize(CGSize size);
    [[nodiscard]] const std::vector<std::shared_ptr<NSImageRep>>& representations() const;
    void addRepresentation(std::shared_ptr<NSImageRep> representation);
    void removeRepresentation(const std::shared_ptr<NSImageRep>& representation);
    /// An image of its own with the same forms.
    [[nodiscard]] std::shared_ptr<NSImage> copy() const;

    /// The form that serves best at `scale` pixels a point, null without any.
    [[nodiscard]] std::shared_ptr<NSImageRep> bestRepresentation(double scale) const;
    /// The best form's own pixels; of a drawn one size times the main screen's scale. Null without forms and
    /// without area.
    [[nodiscard]] std::shared_ptr<const CGImage> cgImageForProposedRect() const;
    /// The same picture as a TIFF file; absent without forms.
    [[nodiscard]] std::optional<Data> TIFFRepresentation() const;

    /// Draws into `rect`, upright; `fraction` is multiplied with its alpha.
    void draw(CGContext& context, const CGRect& rect, double fraction = 1) const;
    /// The same for views: a template image shows its alpha in `tint`, in the label colour without one.
    void drawTinted(CGContext& context, const CGRect& rect, const std::shared_ptr<NSColor>& tint) const;
    /// On the current graphics context; without one nothing happens.
    void drawInRect(const CGRect& rect) const;

    /// Makes a bitmap of size times the main screen's scale, with the image drawn on it, the current context
    /// of this thread; `unlockFocus` makes it the one form. An image without area stays as it is, and there
    /// is no current context meanwhile.
    void lockFocus();
    void unlockFocus();

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSImage(std::string name, std::vector<File> files);
    explicit NSImage(CGSize size) : size_(size) {}
    void readFiles() const;

    std::string name_;
    std::vector<File> files_;
    bool isTemplate_ = false;
    mutable std::once_flag filesRead_;
    mutable CGSize size_{};
    mutable std::vector<std::shared_ptr<NSImageRep>> representations_;
    std::shared_ptr<NSImageFocus> focus_;
};

}  // namespace zqcore::platform
