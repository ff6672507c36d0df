#include "png_picture.h"

#include <cmath>

#ifdef TAVELL_PNG
#include <cairo.h>
#include <librsvg/rsvg.h>
#endif

namespace kit
{

#ifdef TAVELL_PNG

namespace
{

/// [px] cairo's image surfaces end at 32767; 400 million pixels are 1.6 GB.
constexpr double kLongestSide = 32767.0;
constexpr double kMostPixels = 4e8;

/// Ends the life of a C object.
template <class T, void (*free)(T*)> struct Owner {
    explicit Owner(T* owned) : object(owned) {}
    ~Owner()
    {
        if (object != nullptr) free(object);
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    T* object;
};

void freeHandle(RsvgHandle* handle)
{
    g_object_unref(handle);
}

cairo_status_t append(void* bytes, const unsigned char* data, unsigned int length)
{
    // an exception must not pass through cairo
    try {
        static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), length);
    } catch (...) {
        return CAIRO_STATUS_NO_MEMORY;
    }
    return CAIRO_STATUS_SUCCESS;
}

bool fail(Findings& findings, const std::string& why)
{
    findings.add(Code::png_failed, {}, "the picture cannot be drawn: " + why);
    return false;
}

bool failWith(Findings& findings, GError* error)
{
    const std::string why = error != nullptr ? error->message : "no reason is given";
    if (error != nullptr) g_error_free(error);
    return fail(findings, why);
}

}  // namespace

bool writePng(const std::string& svg, double scale, std::string& pngBytes, Findings& findings)
{
    pngBytes.clear();
    GError* error = nullptr;
    const Owner<RsvgHandle, freeHandle> handle(
        rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(svg.data()), svg.size(), &error));
    if (handle.object == nullptr) return failWith(findings, error);

    double width = 0.0;
    double height = 0.0;
    if (!rsvg_handle_get_intrinsic_size_in_pixels(handle.object, &width, &height))
        return fail(findings, "the document has no size");
    width = std::ceil(width * scale);
    height = std::ceil(height * scale);
    if (!(width >= 1.0 && height >= 1.0 && width <= kLongestSide && height <= kLongestSide &&
          width * height <= kMostPixels))
        return fail(findings, "its size is no number of pixels that can be drawn");

    const Owner<cairo_surface_t, cairo_surface_destroy> surface(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(width), static_cast<int>(height)));
    const Owner<cairo_t, cairo_destroy> context(cairo_create(surface.object));
    const RsvgRectangle page{0.0, 0.0, width, height};
    if (!rsvg_handle_render_document(handle.object, context.object, &page, &error))
        return failWith(findings, error);
    const cairo_status_t status = cairo_surface_write_to_png_stream(surface.object, append, &pngBytes);
    if (status == CAIRO_STATUS_SUCCESS) return true;
    pngBytes.clear();
    return fail(findings, cairo_status_to_string(status));
}

#else

bool writePng(const std::string& svg, double scale, std::string& pngBytes, Findings& findings)
{
    static_cast<void>(svg);
    static_cast<void>(scale);
    pngBytes.clear();
    findings.add(Code::png_not_built, {}, "this build draws no PNG pictures");
    return false;
}

#endif

}  // namespace kit
