#pragma once

#include <memory>

#include <cairo.h>
#include <pango/pangocairo.h>

/// Owned handles of Cairo and Pango. For the sources of this library alone.
namespace tavaro {

template<auto release> struct ReleaseHandle {
    void operator()(auto* handle) const { release(handle); }
};

using CairoContext = std::unique_ptr<cairo_t, ReleaseHandle<cairo_destroy>>;
using CairoSurface = std::unique_ptr<cairo_surface_t, ReleaseHandle<cairo_surface_destroy>>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, ReleaseHandle<cairo_pattern_destroy>>;
using CairoFontOptions = std::unique_ptr<cairo_font_options_t, ReleaseHandle<cairo_font_options_destroy>>;
using PangoMap = std::unique_ptr<PangoFontMap, ReleaseHandle<g_object_unref>>;
using PangoContextHandle = std::unique_ptr<PangoContext, ReleaseHandle<g_object_unref>>;
using PangoLayoutHandle = std::unique_ptr<PangoLayout, ReleaseHandle<g_object_unref>>;
using PangoFontHandle = std::unique_ptr<PangoFont, ReleaseHandle<g_object_unref>>;
using PangoDescription = std::unique_ptr<PangoFontDescription, ReleaseHandle<pango_font_description_free>>;
using PangoAttributes = std::unique_ptr<PangoAttrList, ReleaseHandle<pango_attr_list_unref>>;
using PangoLines = std::unique_ptr<PangoLayoutIter, ReleaseHandle<pango_layout_iter_free>>;

}
