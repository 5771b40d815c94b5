// Build-time tool: renders an outline font at one pixel size into an AngelCode bitmap
// font, a .fnt text and one glyph page as an 8-bit gray PNG, whose gray is coverage.
//
//   fontgen <font file> <pixel size> <ranges> <output stem>
//
// <ranges> lists character codes, as "32-126,160-255". The page is written as
// "<output stem>_0.png" and named in the .fnt by its file name alone, so that the font
// finds it among the resources.
#include <ft2build.h>
#include FT_FREETYPE_H
#include <png.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

constexpr int pageWidth = 256;
// Blank pixels between glyphs in the page. The .fnt's own "spacing" stays 0: readers of
// the format add it to every advance.
constexpr int spacing = 1;

struct Glyph {
    unsigned code;
    FT_UInt index;
    int width, height;
    int left, top;  // bitmap origin relative to the pen, y up
    int advance;
    std::vector<unsigned char> pixels;  // width * height coverage bytes
    int x = 0, y = 0;                   // place in the page
};

[[noreturn]] void die(const std::string& message) {
    std::fprintf(stderr, "fontgen: %s\n", message.c_str());
    std::exit(1);
}

std::vector<unsigned> parseRanges(const std::string& text) {
    std::vector<unsigned> codes;
    std::size_t i = 0;
    while (i < text.size()) {
        char* end;
        const unsigned long first = std::strtoul(text.c_str() + i, &end, 10);
        unsigned long last = first;
        if (*end == '-') last = std::strtoul(end + 1, &end, 10);
        if (end == text.c_str() + i || last < first || last > 0x10FFFF) die("bad ranges: " + text);
        for (unsigned long c = first; c <= last; ++c) codes.push_back(unsigned(c));
        i = std::size_t(end - text.c_str());
        if (i < text.size() && text[i] == ',') ++i;
    }
    return codes;
}

// Shelf packing, tallest glyphs first: rows of glyphs left to right, each row as tall as
// its first glyph. Answers the page height.
int pack(std::vector<Glyph*>& order) {
    std::stable_sort(order.begin(), order.end(), [](const Glyph* a, const Glyph* b) { return a->height > b->height; });
    int x = 0, y = 0, rowHeight = 0;
    for (Glyph* g : order) {
        if (g->width == 0 || g->height == 0) continue;
        if (x + g->width > pageWidth) {
            x = 0;
            y += rowHeight + spacing;
            rowHeight = 0;
        }
        g->x = x;
        g->y = y;
        x += g->width + spacing;
        rowHeight = std::max(rowHeight, g->height);
    }
    return y + rowHeight;
}

void writeGrayPng(const std::string& path, const std::vector<unsigned char>& pixels, int width, int height) {
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) die("cannot write " + path);
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info || setjmp(png_jmpbuf(png))) die("cannot encode " + path);
    png_init_io(png, file);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), 8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, 9);
    png_write_info(png, info);
    for (int y = 0; y < height; ++y) png_write_row(png, pixels.data() + std::size_t(y) * std::size_t(width));
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    if (std::fclose(file) != 0) die("cannot write " + path);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::fprintf(stderr, "usage: fontgen <font file> <pixel size> <ranges> <output stem>\n");
        return 2;
    }
    const std::string fontPath = argv[1];
    const int pixelSize = std::atoi(argv[2]);
    const std::vector<unsigned> codes = parseRanges(argv[3]);
    const std::string stem = argv[4];
    const std::string pageName = stem.substr(stem.rfind('/') + 1) + "_0.png";
    if (pixelSize < 4 || pixelSize > 200) die("bad pixel size");

    FT_Library library;
    FT_Face face;
    if (FT_Init_FreeType(&library)) die("cannot start FreeType");
    if (FT_New_Face(library, fontPath.c_str(), 0, &face)) die("cannot open " + fontPath);
    if (FT_Set_Pixel_Sizes(face, 0, FT_UInt(pixelSize))) die("cannot set the size");

    // The font's own hinting fits stems and heights to whole pixels, which is what keeps
    // text this small sharp.
    std::vector<Glyph> glyphs;
    for (unsigned code : codes) {
        const FT_UInt index = FT_Get_Char_Index(face, code);
        if (index == 0) continue;
        if (FT_Load_Glyph(face, index, FT_LOAD_DEFAULT) || FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL))
            die("cannot render character " + std::to_string(code));
        const FT_GlyphSlot slot = face->glyph;
        const FT_Bitmap& bitmap = slot->bitmap;
        Glyph g{code, index, int(bitmap.width), int(bitmap.rows), slot->bitmap_left, slot->bitmap_top,
                int((slot->advance.x + 32) >> 6), {}};
        g.pixels.resize(std::size_t(g.width) * std::size_t(g.height));
        for (int y = 0; y < g.height; ++y)
            for (int x = 0; x < g.width; ++x)
                g.pixels[std::size_t(y * g.width + x)] = bitmap.buffer[y * bitmap.pitch + x];
        glyphs.push_back(std::move(g));
    }
    if (glyphs.empty()) die("no characters of the ranges are in the font");

    std::vector<Glyph*> order;
    for (Glyph& g : glyphs) order.push_back(&g);
    for (const Glyph& g : glyphs)
        if (g.width > pageWidth) die("a glyph is wider than the page");
    const int pageHeight = std::max(pack(order), 1);
    std::vector<unsigned char> page(std::size_t(pageWidth) * std::size_t(pageHeight), 0);
    for (const Glyph& g : glyphs)
        for (int y = 0; y < g.height; ++y)
            std::copy_n(g.pixels.data() + std::size_t(y * g.width), g.width,
                        page.data() + std::size_t((g.y + y) * pageWidth + g.x));
    writeGrayPng(stem + "_0.png", page, pageWidth, pageHeight);

    const FT_Size_Metrics& metrics = face->size->metrics;
    const int base = int((metrics.ascender + 63) >> 6);
    const int lineHeight = int((metrics.height + 63) >> 6);
    const bool bold = (face->style_flags & FT_STYLE_FLAG_BOLD) != 0;
    const bool italic = (face->style_flags & FT_STYLE_FLAG_ITALIC) != 0;

    std::string text;
    char line[512];
    std::snprintf(line, sizeof line,
                  "info face=\"%s\" size=%d bold=%d italic=%d charset=\"\" unicode=1 stretchH=100 smooth=1 aa=1 "
                  "padding=0,0,0,0 spacing=0,0\n",
                  face->family_name ? face->family_name : "", pixelSize, bold, italic);
    text += line;
    std::snprintf(line, sizeof line, "common lineHeight=%d base=%d scaleW=%d scaleH=%d pages=1 packed=0\n", lineHeight,
                  base, pageWidth, pageHeight);
    text += line;
    text += "page id=0 file=\"" + pageName + "\"\n";
    text += "chars count=" + std::to_string(glyphs.size()) + "\n";
    for (const Glyph& g : glyphs) {
        std::snprintf(line, sizeof line,
                      "char id=%u x=%d y=%d width=%d height=%d xoffset=%d yoffset=%d xadvance=%d page=0 chnl=15\n",
                      g.code, g.x, g.y, g.width, g.height, g.left, base - g.top, g.advance);
        text += line;
    }

    // Kerning as the font's kern table gives it, fitted to whole pixels; pairs that come
    // to nothing at this size are left out.
    std::string kerning;
    std::size_t pairs = 0;
    if (FT_HAS_KERNING(face)) {
        for (const Glyph& a : glyphs)
            for (const Glyph& b : glyphs) {
                FT_Vector delta;
                if (FT_Get_Kerning(face, a.index, b.index, FT_KERNING_DEFAULT, &delta) || delta.x == 0) continue;
                std::snprintf(line, sizeof line, "kerning first=%u second=%u amount=%ld\n", a.code, b.code,
                              long(delta.x >> 6));
                kerning += line;
                ++pairs;
            }
    }
    text += "kernings count=" + std::to_string(pairs) + "\n" + kerning;

    FILE* out = std::fopen((stem + ".fnt").c_str(), "wb");
    if (!out || std::fwrite(text.data(), 1, text.size(), out) != text.size() || std::fclose(out) != 0)
        die("cannot write " + stem + ".fnt");
    FT_Done_Face(face);
    FT_Done_FreeType(library);
    return 0;
}
