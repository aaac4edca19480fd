#include "Platform/Graphics/Linux/FontMap.h"

#include <fontconfig/fontconfig.h>
#include <hb-ot.h>
#include <pango/pangofc-fontmap.h>

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Base/NSLog.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Graphics/NSFont.h"

namespace zqcore::platform {

namespace {

constexpr const char* kFamilies = "DejaVu Sans,WenQuanYi Micro Hei,Sans";

/// A file of a pinned family, with where distributions put it.
struct PinnedFile {
    const char* family;
    const char* style;
    std::array<const char*, 3> paths;
};

constexpr std::array<PinnedFile, 3> kPinnedFiles{{
    {"DejaVu Sans",
     "Book",
     {"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", "/usr/share/fonts/dejavu-sans-fonts/DejaVuSans.ttf",
      "/usr/share/fonts/TTF/DejaVuSans.ttf"}},
    {"DejaVu Sans",
     "Bold",
     {"/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf",
      "/usr/share/fonts/dejavu-sans-fonts/DejaVuSans-Bold.ttf", "/usr/share/fonts/TTF/DejaVuSans-Bold.ttf"}},
    {"WenQuanYi Micro Hei",
     "Regular",
     {"/usr/share/fonts/truetype/wqy/wqy-microhei.ttc", "/usr/share/fonts/wqy-microhei/wqy-microhei.ttc",
      "/usr/share/fonts/wenquanyi/wqy-microhei/wqy-microhei.ttc"}},
}};

/// Where the system's own list has the font, empty if it hasn't.
std::string systemFontFile(const PinnedFile& font) {
    FcPattern* wanted = FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, font.family, FC_STYLE, FcTypeString,
                                       font.style, static_cast<char*>(nullptr));
    FcObjectSet* asked = FcObjectSetBuild(FC_FILE, static_cast<char*>(nullptr));
    FcFontSet* found = FcFontList(nullptr, wanted, asked);
    std::string path;
    FcChar8* file = nullptr;
    if (found && found->nfont > 0 &&
        FcPatternGetString(found->fonts[0], FC_FILE, 0, &file) == FcResultMatch) {
        path = reinterpret_cast<const char*>(file);
    }
    if (found) FcFontSetDestroy(found);
    FcObjectSetDestroy(asked);
    FcPatternDestroy(wanted);
    return path;
}

std::string& rootFolder() {
    static std::string& folder = *new std::string;
    return folder;
}

std::string fileOf(const PinnedFile& font) {
    for (const char* path : font.paths) {
        if (NSFileManager::defaultManager().fileExistsAtPath(rootFolder() + path)) return rootFolder() + path;
    }
    return systemFontFile(font);
}

std::string escaped(std::string_view path) {
    std::string text;
    for (const char c : path) text += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
    return text;
}

/// The files as FontConfig is told of them: by their folders, so that it finds them in the system's cache and
/// needn't read them (8 ms), all other fonts shut out.
std::string configurationText(const std::vector<std::string>& files) {
    std::string text = "<?xml version=\"1.0\"?><fontconfig>";
    for (const std::string& file : files) {
        text += "<dir>" + escaped(stringByDeletingLastPathComponent(file)) + "</dir>";
    }
    text +=
        "<cachedir>/var/cache/fontconfig</cachedir><cachedir>/usr/lib/fontconfig/cache</cachedir>"
        "<selectfont><rejectfont><glob>*</glob></rejectfont><acceptfont>";
    for (const std::string& file : files) text += "<glob>" + escaped(file) + "</glob>";
    return text + "</acceptfont></selectfont></fontconfig>";
}

FcConfig* configurationOf(const std::vector<std::string>& files) {
    if (files.empty()) return nullptr;
    FcConfig* config = FcConfigCreate();
    const std::string text = configurationText(files);
    const bool read =
        FcConfigParseAndLoadFromMemory(config, reinterpret_cast<const FcChar8*>(text.c_str()), FcTrue) &&
        FcConfigBuildFonts(config);
    const FcFontSet* fonts = read ? FcConfigGetFonts(config, FcSetSystem) : nullptr;
    if (fonts && fonts->nfont > 0) return config;
    FcConfigDestroy(config);
    return nullptr;
}

/// A configuration that knows the pinned files and nothing else, so that no setting of the machine changes a
/// picture; null if none of them is here.
FcConfig* pinnedConfiguration() {
    static FcConfig* const shared = [] {
        std::vector<std::string> files;
        for (const PinnedFile& font : kPinnedFiles) {
            std::string path = fileOf(font);
            if (path.empty()) {
                NSLog(std::string("Font missing, text will look different: ") + font.family + " " +
                      font.style);
            } else {
                files.push_back(std::move(path));
            }
        }
        return configurationOf(files);
    }();
    return shared;
}

bool systemHasFonts() {
    static const bool any = [] {
        const FcFontSet* fonts = FcConfigGetFonts(nullptr, FcSetSystem);
        return fonts && fonts->nfont > 0;
    }();
    return any;
}

using ContextHandle = std::unique_ptr<PangoContext, ReleasedBy<g_object_unref>>;

ContextHandle makeContext(FcConfig* config) {
    PangoFontMap* map = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
    if (!map) return nullptr;
    if (config) pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map), config);
    ContextHandle context(pango_font_map_create_context(map));
    g_object_unref(map);
    // Without hints a text is as wide at one pixel a point as at two, and looks alike on every machine.
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context.get(), options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(context.get(), FALSE);
    // The script decides, not the language that the process runs in.
    pango_context_set_language(context.get(), pango_language_from_string("en"));
    return context;
}

}  // namespace

void usePinnedFontsBelow(std::string folder) { rootFolder() = std::move(folder); }

PangoContext* pinnedTextContext() {
    FcConfig* const config = pinnedConfiguration();
    if (!config) return systemTextContext();
    // One a thread: a font map isn't for two at once.
    thread_local const ContextHandle context = makeContext(config);
    return context.get();
}

PangoContext* systemTextContext() {
    // pango ends the process if it finds no font at all.
    if (!systemHasFonts()) return nullptr;
    thread_local const ContextHandle context = makeContext(nullptr);
    return context.get();
}

FontDescription fontDescription(CGFloat size, CGFloat weight) {
    FontDescription description(pango_font_description_new());
    pango_font_description_set_family_static(description.get(), kFamilies);
    pango_font_description_set_absolute_size(description.get(), size * PANGO_SCALE);
    PangoWeight pangoWeight = PANGO_WEIGHT_NORMAL;
    if (weight >= NSFontWeightBold) {
        pangoWeight = PANGO_WEIGHT_BOLD;
    } else if (weight >= NSFontWeightSemibold) {
        pangoWeight = PANGO_WEIGHT_SEMIBOLD;
    } else if (weight >= NSFontWeightMedium) {
        pangoWeight = PANGO_WEIGHT_MEDIUM;
    }
    pango_font_description_set_weight(description.get(), pangoWeight);
    return description;
}

FontRatios fontRatios(CGFloat weight) {
    // Of the pinned family, for a machine without fonts.
    FontRatios ratios{1901.0 / 2048, 483.0 / 2048, 0};
    PangoContext* context = pinnedTextContext();
    if (!context) return ratios;
    constexpr double size = 1000;
    const FontDescription description = fontDescription(size, weight);
    PangoFont* font =
        pango_font_map_load_font(pango_context_get_font_map(context), context, description.get());
    if (!font) return ratios;
    hb_font_extents_t extents{};
    if (hb_font_get_h_extents(pango_font_get_hb_font(font), &extents)) {
        constexpr double unit = size * PANGO_SCALE;
        ratios = {extents.ascender / unit, -extents.descender / unit, extents.line_gap / unit};
    }
    g_object_unref(font);
    return ratios;
}

}  // namespace zqcore::platform
