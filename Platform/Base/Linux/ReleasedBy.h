#pragma once

namespace zqcore::platform {

/// The deleter of a C library's handle, by the function that gives it up:
///     using Surface = std::unique_ptr<cairo_surface_t, ReleasedBy<cairo_surface_destroy>>;
template <auto Release>
struct ReleasedBy {
    template <class T>
    void operator()(T* object) const noexcept {
        Release(object);
    }
};

}  // namespace zqcore::platform
