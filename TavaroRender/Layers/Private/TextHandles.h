#pragma once

#include <TavaroCore/Files/ReleaseWith.h>

#include <memory>

#include <cairo.h>
#include <pango/pangocairo.h>

/// Owned handles of Cairo and Pango. For the sources of this library alone.
namespace tavaro {

using CairoContext = std::unique_ptr<cairo_t, ReleaseWith<cairo_destroy>>;
using CairoSurface = std::unique_ptr<cairo_surface_t, ReleaseWith<cairo_surface_destroy>>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, ReleaseWith<cairo_pattern_destroy>>;
using CairoFontOptions = std::unique_ptr<cairo_font_options_t, ReleaseWith<cairo_font_options_destroy>>;
using PangoMap = std::unique_ptr<PangoFontMap, ReleaseWith<g_object_unref>>;
using PangoContextHandle = std::unique_ptr<PangoContext, ReleaseWith<g_object_unref>>;
using PangoLayoutHandle = std::unique_ptr<PangoLayout, ReleaseWith<g_object_unref>>;
using PangoFontHandle = std::unique_ptr<PangoFont, ReleaseWith<g_object_unref>>;
using PangoDescription = std::unique_ptr<PangoFontDescription, ReleaseWith<pango_font_description_free>>;
using PangoAttributes = std::unique_ptr<PangoAttrList, ReleaseWith<pango_attr_list_unref>>;
using PangoLines = std::unique_ptr<PangoLayoutIter, ReleaseWith<pango_layout_iter_free>>;

}
