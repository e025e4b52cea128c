// Exif, IPTC and XMP of pictures.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"
#include "engine/readers/MediaTags.h"
#include "engine/readers/NameCharset.h"

#include <exiv2/exiv2.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <new>

// The library's owner of a picture is a class that the language has given up.
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace engine {

namespace {

struct Key {
    const char* name;
    MediaTag tag;
};

constexpr std::array kExifTexts{
    Key{"Exif.Image.DocumentName", MediaTag::Title},
    Key{"Exif.Image.PageName", MediaTag::Title},
    Key{"Exif.Image.ImageDescription", MediaTag::Subject},
    Key{"Exif.Image.Artist", MediaTag::Author},
    Key{"Exif.Photo.CameraOwnerName", MediaTag::Author},
    Key{"Exif.Image.Copyright", MediaTag::Copyright},
    Key{"Exif.Photo.DateTimeOriginal", MediaTag::Date},
    Key{"Exif.Photo.LensModel", MediaTag::Lens},
};

// Written by the file manager of another system, in UTF-16.
constexpr std::array kExifWideTexts{
    Key{"Exif.Image.XPTitle", MediaTag::Title},
    Key{"Exif.Image.XPSubject", MediaTag::Subject},
    Key{"Exif.Image.XPAuthor", MediaTag::Author},
    Key{"Exif.Image.XPKeywords", MediaTag::Keywords},
    Key{"Exif.Image.XPComment", MediaTag::Comments},
};

constexpr std::array kIptc{
    Key{"Iptc.Application2.ObjectName", MediaTag::Title},
    Key{"Iptc.Application2.Headline", MediaTag::Title},
    Key{"Iptc.Application2.Caption", MediaTag::Subject},
    Key{"Iptc.Application2.Keywords", MediaTag::Keywords},
    Key{"Iptc.Application2.Category", MediaTag::Keywords},
    Key{"Iptc.Application2.SuppCategory", MediaTag::Keywords},
    Key{"Iptc.Application2.Byline", MediaTag::Author},
    Key{"Iptc.Application2.Writer", MediaTag::Author},
    Key{"Iptc.Application2.Credit", MediaTag::Author},
    Key{"Iptc.Application2.Source", MediaTag::Author},
    Key{"Iptc.Application2.Copyright", MediaTag::Copyright},
    Key{"Iptc.Application2.SpecialInstructions", MediaTag::Comments},
    Key{"Iptc.Application2.DateCreated", MediaTag::Date},
    Key{"Iptc.Application2.SubLocation", MediaTag::Place},
    Key{"Iptc.Application2.City", MediaTag::Place},
    Key{"Iptc.Application2.ProvinceState", MediaTag::Place},
    Key{"Iptc.Application2.CountryName", MediaTag::Place},
};

constexpr std::array kXmp{
    Key{"Xmp.dc.title", MediaTag::Title},
    Key{"Xmp.photoshop.Headline", MediaTag::Title},
    Key{"Xmp.dc.description", MediaTag::Subject},
    Key{"Xmp.tiff.ImageDescription", MediaTag::Subject},
    Key{"Xmp.dc.subject", MediaTag::Keywords},
    Key{"Xmp.lr.hierarchicalSubject", MediaTag::Keywords},
    Key{"Xmp.digiKam.TagsList", MediaTag::Keywords},
    Key{"Xmp.MicrosoftPhoto.LastKeywordXMP", MediaTag::Keywords},
    Key{"Xmp.photoshop.Category", MediaTag::Keywords},
    Key{"Xmp.dc.creator", MediaTag::Author},
    Key{"Xmp.dc.contributor", MediaTag::Author},
    Key{"Xmp.tiff.Artist", MediaTag::Author},
    Key{"Xmp.photoshop.CaptionWriter", MediaTag::Author},
    Key{"Xmp.photoshop.Credit", MediaTag::Author},
    Key{"Xmp.photoshop.Source", MediaTag::Author},
    Key{"Xmp.dc.rights", MediaTag::Copyright},
    Key{"Xmp.exif.UserComment", MediaTag::Comments},
    Key{"Xmp.photoshop.Instructions", MediaTag::Comments},
    Key{"Xmp.xmp.Label", MediaTag::Comments},
    Key{"Xmp.xmp.Rating", MediaTag::Rating},
    Key{"Xmp.photoshop.DateCreated", MediaTag::Date},
    Key{"Xmp.iptc.Location", MediaTag::Place},
    Key{"Xmp.photoshop.City", MediaTag::Place},
    Key{"Xmp.photoshop.State", MediaTag::Place},
    Key{"Xmp.photoshop.Country", MediaTag::Place},
};

// What ends the text in a field of fixed length.
std::string UpToZero(std::string text) {
    text.resize(std::min(text.size(), text.find('\0')));
    return text;
}

std::string ExifText(const Exiv2::ExifData& exif, const char* name) {
    const auto found = exif.findKey(Exiv2::ExifKey(name));
    return found == exif.end() ? std::string() : NameCharset().Decode(UpToZero(found->toString()));
}

void AddWideText(const Exiv2::Exifdatum& datum, MediaTag tag, MediaTags& tags) {
    std::string bytes(static_cast<std::size_t>(std::max(0L, datum.size())), '\0');
    if (!bytes.empty())
        datum.copy(reinterpret_cast<Exiv2::byte*>(bytes.data()), Exiv2::littleEndian);
    tags.Add(tag, DecodeText(bytes, {"UTF-16LE", 0, false}, bytes.size() * 2));
}

// Degrees out of degrees, minutes and seconds; not a number where they are missing.
double Degrees(const Exiv2::ExifData& exif, const std::string& name) {
    const auto angle = exif.findKey(Exiv2::ExifKey("Exif.GPSInfo." + name));
    const auto side = exif.findKey(Exiv2::ExifKey("Exif.GPSInfo." + name + "Ref"));
    if (angle == exif.end() || angle->count() < 1)
        return std::nan("");
    double degrees = 0;
    double unit = 1;
    for (long i = 0; i < std::min(3L, angle->count()); ++i, unit *= 60) {
        const Exiv2::Rational part = angle->toRational(i);
        if (part.second != 0)
            degrees += static_cast<double>(part.first) / part.second / unit;
        else if (i == 0)
            return std::nan("");
    }
    const std::string letter = side == exif.end() ? std::string() : side->toString();
    return letter.starts_with('S') || letter.starts_with('W') ? -degrees : degrees;
}

void AddPosition(const Exiv2::ExifData& exif, MediaTags& tags) {
    const double latitude = Degrees(exif, "GPSLatitude");
    const double longitude = Degrees(exif, "GPSLongitude");
    if (!(std::fabs(latitude) <= 90 && std::fabs(longitude) <= 180) ||
        (latitude == 0 && longitude == 0)) // cameras write this where they do not know it
        return;
    std::array<char, 64> text;
    std::snprintf(text.data(), text.size(), "%.6f, %.6f", latitude, longitude);
    tags.Add(MediaTag::Position, text.data());
}

void AddCamera(const Exiv2::ExifData& exif, MediaTags& tags) {
    const std::string make = ExifText(exif, "Exif.Image.Make");
    const std::string model = ExifText(exif, "Exif.Image.Model");
    const bool repeats = model.starts_with(make.substr(0, make.find(' ')));
    tags.Add(MediaTag::Camera, repeats || make.empty() ? model : make + ' ' + model);
    const auto lens = Exiv2::lensName(exif);
    if (lens == exif.end())
        return;
    const std::string name = NameCharset().Decode(UpToZero(lens->print(&exif)));
    // A lens that the library does not know is a number in parentheses.
    if (!name.empty() && name.find_first_not_of("()0123456789. ") != std::string::npos)
        tags.Add(MediaTag::Lens, name);
}

void AddExif(const Exiv2::ExifData& exif, MediaTags& tags) {
    for (const Key& key : kExifTexts)
        tags.Add(key.tag, ExifText(exif, key.name));
    for (const Key& key : kExifWideTexts)
        if (const auto found = exif.findKey(Exiv2::ExifKey(key.name)); found != exif.end())
            AddWideText(*found, key.tag, tags);
    const auto comment = exif.findKey(Exiv2::ExifKey("Exif.Photo.UserComment"));
    if (comment != exif.end()) {
        if (const auto* value = dynamic_cast<const Exiv2::CommentValue*>(&comment->value()))
            tags.Add(MediaTag::Comments, NameCharset().Decode(UpToZero(value->comment())));
    }
    AddCamera(exif, tags);
    AddPosition(exif, tags);
    if (exif.findKey(Exiv2::ExifKey("Exif.Photo.DateTimeOriginal")) == exif.end())
        tags.Add(MediaTag::Date, ExifText(exif, "Exif.Image.DateTime"));
}

void AddIptc(const Exiv2::IptcData& iptc, MediaTags& tags) {
    // All of a file is of one charset.
    NameCharset charset;
    for (const Exiv2::Iptcdatum& datum : iptc)
        charset.Learn(datum.toString());
    for (const Key& key : kIptc)
        for (const Exiv2::Iptcdatum& datum : iptc)
            if (datum.key() == key.name)
                tags.Add(key.tag, charset.Decode(UpToZero(datum.toString())));
}

void AddXmpValue(const Exiv2::Xmpdatum& datum, MediaTag tag, MediaTags& tags) {
    if (const auto* texts = dynamic_cast<const Exiv2::LangAltValue*>(&datum.value())) {
        for (const auto& [language, text] : texts->value_)
            tags.Add(tag, text);
        return;
    }
    const long count = datum.typeId() == Exiv2::xmpText ? 1 : datum.count();
    for (long i = 0; i < count; ++i)
        tags.Add(tag, count == 1 ? datum.toString() : datum.toString(i));
}

void AddXmp(const Exiv2::XmpData& xmp, MediaTags& tags) {
    for (const Key& key : kXmp)
        for (const Exiv2::Xmpdatum& datum : xmp)
            if (datum.key() == key.name)
                AddXmpValue(datum, key.tag, tags);
    // The people in the picture, each with a rectangle around the face.
    for (const Exiv2::Xmpdatum& datum : xmp)
        if (datum.key().ends_with("/mwg-rs:Name") || datum.key().ends_with("PersonDisplayName"))
            tags.Add(MediaTag::People, datum.toString());
}

} // namespace

void ReadPictureTags(std::string_view bytes, MediaTags& tags) {
    PrepareMedia();
    try {
        // The library reads where the bytes are.
        const auto picture = Exiv2::ImageFactory::open(
            reinterpret_cast<const Exiv2::byte*>(bytes.data()), static_cast<long>(bytes.size()));
        if (picture.get() == nullptr)
            return;
        try {
            picture->readMetadata();
        } catch (const Exiv2::AnyError&) {
            // What was found before the damage counts.
        }
        AddExif(picture->exifData(), tags);
        AddIptc(picture->iptcData(), tags);
        AddXmp(picture->xmpData(), tags);
        if (bytes.starts_with("\xFF\xD8")) // of PNG the library calls another text so
            tags.Add(MediaTag::Comments, NameCharset().Decode(UpToZero(picture->comment())));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        // It is indexed by what else is known of it.
    }
}

void PrepareMedia() {
    static const bool prepared = [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::enableBMFF(true);
        return Exiv2::XmpParser::initialize();
    }();
    static_cast<void>(prepared);
}

} // namespace engine
