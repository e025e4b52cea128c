// The control words of RTF that matter to its text.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/RtfWords.h"

#include <algorithm>
#include <array>

namespace engine {
namespace {

struct Entry {
    std::string_view name;
    RtfWord word;
    int argument;
};

// Sorted by name. What is not here and not marked as to be skipped only changes the looks.
constexpr std::array kEntries{
    Entry{"aftncn", RtfWord::Skip, 0},
    Entry{"aftnsep", RtfWord::Skip, 0},
    Entry{"aftnsepc", RtfWord::Skip, 0},
    Entry{"annotation", RtfWord::Note, 0},
    Entry{"ansi", RtfWord::CodePage, 1252},
    Entry{"ansicpg", RtfWord::CodePage, -1},
    Entry{"atnauthor", RtfWord::Skip, 0},
    Entry{"atndate", RtfWord::Skip, 0},
    Entry{"atnicn", RtfWord::Skip, 0},
    Entry{"atnid", RtfWord::Skip, 0},
    Entry{"atnparent", RtfWord::Skip, 0},
    Entry{"atnref", RtfWord::Skip, 0},
    Entry{"atntime", RtfWord::Skip, 0},
    Entry{"atrfend", RtfWord::Skip, 0},
    Entry{"atrfstart", RtfWord::Skip, 0},
    Entry{"author", RtfWord::Field, 1},
    Entry{"background", RtfWord::Skip, 0},
    Entry{"bkmkend", RtfWord::Skip, 0},
    Entry{"bkmkstart", RtfWord::Skip, 0},
    Entry{"blipuid", RtfWord::Skip, 0},
    Entry{"bullet", RtfWord::Character, 0x2022},
    Entry{"category", RtfWord::Field, 5},
    Entry{"cell", RtfWord::Cell, 0},
    Entry{"colortbl", RtfWord::Skip, 0},
    Entry{"column", RtfWord::Line, 0},
    Entry{"comment", RtfWord::Skip, 0},
    Entry{"company", RtfWord::Field, 6},
    Entry{"cpg", RtfWord::FontCodePage, 0},
    Entry{"datafield", RtfWord::Skip, 0},
    Entry{"datastore", RtfWord::Skip, 0},
    Entry{"deff", RtfWord::DefaultFont, 0},
    Entry{"deleted", RtfWord::Deleted, 0},
    Entry{"do", RtfWord::Through, 0},
    Entry{"doccomm", RtfWord::Field, 4},
    Entry{"docvar", RtfWord::Skip, 0},
    Entry{"dptxbxtext", RtfWord::TextBox, 0},
    Entry{"emdash", RtfWord::Character, 0x2014},
    Entry{"emspace", RtfWord::Character, 0x2003},
    Entry{"endash", RtfWord::Character, 0x2013},
    Entry{"enspace", RtfWord::Character, 0x2002},
    Entry{"f", RtfWord::Font, 0},
    Entry{"falt", RtfWord::Skip, 0},
    Entry{"fcharset", RtfWord::FontCharset, 0},
    Entry{"ffdeftext", RtfWord::Skip, 0},
    Entry{"field", RtfWord::Through, 0},
    Entry{"filetbl", RtfWord::Skip, 0},
    Entry{"fldinst", RtfWord::Skip, 0},
    Entry{"fldrslt", RtfWord::Through, 0},
    Entry{"fldtype", RtfWord::Skip, 0},
    Entry{"fontemb", RtfWord::Skip, 0},
    Entry{"fontfile", RtfWord::Skip, 0},
    Entry{"fonttbl", RtfWord::Fonts, 0},
    Entry{"footer", RtfWord::Header, 0},
    Entry{"footerf", RtfWord::Header, 0},
    Entry{"footerl", RtfWord::Header, 0},
    Entry{"footerr", RtfWord::Header, 0},
    Entry{"footnote", RtfWord::Note, 0},
    Entry{"formfield", RtfWord::Skip, 0},
    Entry{"fromhtml", RtfWord::FromHtml, 0},
    Entry{"ftncn", RtfWord::Skip, 0},
    Entry{"ftnsep", RtfWord::Skip, 0},
    Entry{"ftnsepc", RtfWord::Skip, 0},
    Entry{"generator", RtfWord::Skip, 0},
    Entry{"gridtbl", RtfWord::Skip, 0},
    Entry{"header", RtfWord::Header, 0},
    Entry{"headerf", RtfWord::Header, 0},
    Entry{"headerl", RtfWord::Header, 0},
    Entry{"headerr", RtfWord::Header, 0},
    Entry{"hlinkbase", RtfWord::Skip, 0},
    Entry{"htmlrtf", RtfWord::HtmlOff, 0},
    Entry{"htmltag", RtfWord::HtmlTag, 0},
    Entry{"ilvl", RtfWord::ListLevel, 0},
    Entry{"info", RtfWord::Look, 0},
    Entry{"intbl", RtfWord::InTable, 0},
    Entry{"itap", RtfWord::TableLevel, 0},
    Entry{"jpegblip", RtfWord::PictureType, 1},
    Entry{"keywords", RtfWord::Field, 3},
    Entry{"latentstyles", RtfWord::Skip, 0},
    Entry{"lchars", RtfWord::Skip, 0},
    Entry{"ldblquote", RtfWord::Character, 0x201C},
    Entry{"line", RtfWord::Line, 0},
    Entry{"list", RtfWord::Skip, 0},
    Entry{"listlevel", RtfWord::Skip, 0},
    Entry{"listname", RtfWord::Skip, 0},
    Entry{"listoverridetable", RtfWord::Skip, 0},
    Entry{"listpicture", RtfWord::Skip, 0},
    Entry{"listtable", RtfWord::Skip, 0},
    Entry{"listtext", RtfWord::ListText, 1},
    Entry{"lquote", RtfWord::Character, 0x2018},
    Entry{"ls", RtfWord::List, 0},
    Entry{"ltrmark", RtfWord::Character, 0x200E},
    Entry{"mac", RtfWord::CodePage, 10000},
    Entry{"maccPr", RtfWord::Skip, 0},
    Entry{"manager", RtfWord::Field, 7},
    Entry{"margPr", RtfWord::Skip, 0},
    Entry{"mbarPr", RtfWord::Skip, 0},
    Entry{"mborderBoxPr", RtfWord::Skip, 0},
    Entry{"mboxPr", RtfWord::Skip, 0},
    Entry{"mctrlPr", RtfWord::Skip, 0},
    Entry{"mdPr", RtfWord::Skip, 0},
    Entry{"meqArrPr", RtfWord::Skip, 0},
    Entry{"mfPr", RtfWord::Skip, 0},
    Entry{"mfuncPr", RtfWord::Skip, 0},
    Entry{"mgroupChrPr", RtfWord::Skip, 0},
    Entry{"mhtmltag", RtfWord::Skip, 0},
    Entry{"mlimLowPr", RtfWord::Skip, 0},
    Entry{"mlimUppPr", RtfWord::Skip, 0},
    Entry{"mmPr", RtfWord::Skip, 0},
    Entry{"mmathPict", RtfWord::Skip, 0},
    Entry{"mmathPr", RtfWord::Skip, 0},
    Entry{"mnaryPr", RtfWord::Skip, 0},
    Entry{"moMath", RtfWord::Through, 0},
    Entry{"moMathPara", RtfWord::Through, 0},
    Entry{"moMathParaPr", RtfWord::Skip, 0},
    Entry{"mphantPr", RtfWord::Skip, 0},
    Entry{"mrPr", RtfWord::Skip, 0},
    Entry{"mradPr", RtfWord::Skip, 0},
    Entry{"msPrePr", RtfWord::Skip, 0},
    Entry{"msSubPr", RtfWord::Skip, 0},
    Entry{"msSubSupPr", RtfWord::Skip, 0},
    Entry{"msSupPr", RtfWord::Skip, 0},
    Entry{"mvf", RtfWord::Deleted, 0},
    Entry{"nestcell", RtfWord::NestedCell, 0},
    Entry{"nestrow", RtfWord::NestedRow, 0},
    Entry{"nesttableprops", RtfWord::Through, 0},
    Entry{"nonesttables", RtfWord::Skip, 0},
    Entry{"nonshppict", RtfWord::Skip, 0},
    Entry{"objalias", RtfWord::Skip, 0},
    Entry{"objclass", RtfWord::Skip, 0},
    Entry{"objdata", RtfWord::Skip, 0},
    Entry{"object", RtfWord::Through, 0},
    Entry{"objname", RtfWord::Skip, 0},
    Entry{"objsect", RtfWord::Skip, 0},
    Entry{"objtime", RtfWord::Skip, 0},
    Entry{"operator", RtfWord::Skip, 0},
    Entry{"outlinelevel", RtfWord::Outline, 0},
    Entry{"page", RtfWord::Line, 0},
    Entry{"panose", RtfWord::Skip, 0},
    Entry{"par", RtfWord::Paragraph, 0},
    Entry{"pard", RtfWord::PlainParagraph, 0},
    Entry{"password", RtfWord::Skip, 0},
    Entry{"passwordhash", RtfWord::Skip, 0},
    Entry{"pc", RtfWord::CodePage, 437},
    Entry{"pca", RtfWord::CodePage, 850},
    Entry{"pgdsctbl", RtfWord::Skip, 0},
    Entry{"pgp", RtfWord::Skip, 0},
    Entry{"picprop", RtfWord::Look, 0},
    Entry{"pict", RtfWord::Picture, 0},
    Entry{"plain", RtfWord::PlainCharacter, 0},
    Entry{"pn", RtfWord::Skip, 0},
    Entry{"pngblip", RtfWord::PictureType, 0},
    Entry{"pnseclvl", RtfWord::Skip, 0},
    Entry{"pntext", RtfWord::ListText, 0},
    Entry{"pntxta", RtfWord::Skip, 0},
    Entry{"pntxtb", RtfWord::Skip, 0},
    Entry{"printim", RtfWord::Skip, 0},
    Entry{"private", RtfWord::Skip, 0},
    Entry{"propname", RtfWord::PropertyName, 0},
    Entry{"protusertbl", RtfWord::Skip, 0},
    Entry{"pxe", RtfWord::Skip, 0},
    Entry{"qmspace", RtfWord::Character, 0x2005},
    Entry{"rdblquote", RtfWord::Character, 0x201D},
    Entry{"result", RtfWord::Through, 0},
    Entry{"revtbl", RtfWord::Skip, 0},
    Entry{"row", RtfWord::Row, 0},
    Entry{"rquote", RtfWord::Character, 0x2019},
    Entry{"rsidtbl", RtfWord::Skip, 0},
    Entry{"rtlmark", RtfWord::Character, 0x200F},
    Entry{"rxe", RtfWord::Skip, 0},
    Entry{"s", RtfWord::Style, 0},
    Entry{"sbasedon", RtfWord::BasedOn, 0},
    Entry{"sect", RtfWord::Paragraph, 0},
    Entry{"shp", RtfWord::Through, 0},
    Entry{"shpgrp", RtfWord::Through, 0},
    Entry{"shpinst", RtfWord::Through, 0},
    Entry{"shppict", RtfWord::Through, 0},
    Entry{"shprslt", RtfWord::Skip, 0},
    Entry{"shptxt", RtfWord::TextBox, 0},
    Entry{"sn", RtfWord::ShapeName, 0},
    Entry{"sp", RtfWord::ShapeProperty, 0},
    Entry{"staticval", RtfWord::PropertyValue, 0},
    Entry{"stylesheet", RtfWord::Styles, 0},
    Entry{"subject", RtfWord::Field, 2},
    Entry{"sv", RtfWord::ShapeValue, 0},
    Entry{"tab", RtfWord::Character, 9},
    Entry{"tc", RtfWord::Skip, 0},
    Entry{"tcn", RtfWord::Skip, 0},
    Entry{"template", RtfWord::Skip, 0},
    Entry{"themedata", RtfWord::Skip, 0},
    Entry{"title", RtfWord::Field, 0},
    Entry{"trowd", RtfWord::AnnounceRow, 0},
    Entry{"txe", RtfWord::Skip, 0},
    Entry{"u", RtfWord::Unicode, 0},
    Entry{"uc", RtfWord::FallbackLength, 0},
    Entry{"ud", RtfWord::Through, 0},
    Entry{"upr", RtfWord::Alternatives, 0},
    Entry{"userprops", RtfWord::Look, 0},
    Entry{"wgrffmtfilter", RtfWord::Skip, 0},
    Entry{"xe", RtfWord::Skip, 0},
    Entry{"xform", RtfWord::Skip, 0},
    Entry{"xmlnstbl", RtfWord::Skip, 0},
    Entry{"zwbo", RtfWord::Character, 0x200B},
    Entry{"zwj", RtfWord::Character, 0x200D},
    Entry{"zwnbo", RtfWord::Character, 0x2060},
    Entry{"zwnj", RtfWord::Character, 0x200C},
};
static_assert(std::is_sorted(kEntries.begin(), kEntries.end(),
                             [](const Entry& a, const Entry& b) { return a.name < b.name; }));

// Where the words of each first letter begin in the table.
constexpr std::array<std::uint16_t, 128> kFirst = [] {
    std::array<std::uint16_t, 128> first{};
    std::size_t at = 0;
    for (std::size_t letter = 0; letter < first.size(); ++letter) {
        while (at < kEntries.size() && static_cast<unsigned char>(kEntries[at].name[0]) < letter)
            ++at;
        first[letter] = static_cast<std::uint16_t>(at);
    }
    return first;
}();

} // namespace

RtfMeaning RtfMeaningOf(std::string_view name) {
    if (name.empty() || static_cast<unsigned char>(name[0]) + 1U >= kFirst.size())
        return {};
    const auto letter = static_cast<unsigned char>(name[0]);
    const auto* const end = kEntries.data() + kFirst[letter + 1U];
    const auto* const found =
        std::lower_bound(kEntries.data() + kFirst[letter], end, name,
                         [](const Entry& a, std::string_view b) { return a.name < b; });
    return found != end && found->name == name ? RtfMeaning{found->word, found->argument}
                                               : RtfMeaning{};
}

std::string_view RtfFieldName(int index) {
    constexpr std::array<std::string_view, 8> kNames{"title",    "author",   "subject", "keywords",
                                                     "comments", "category", "company", "manager"};
    return kNames[static_cast<std::size_t>(index)];
}

} // namespace engine
