// The forms in which objects are embedded.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/OleObjects.h"

#include "engine/readers/Charset.h"
#include "engine/readers/CodePage.h"
#include "engine/readers/CompoundWriter.h"
#include "engine/readers/Limits.h"
#include "engine/readers/LittleEndian.h"
#include "engine/readers/Reader.h"

#include <zlib.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace engine {
namespace {

struct NativeFile {
    std::string name;
    std::string_view bytes;
};

// A file of any kind, under the name it had when it was put in.
std::optional<NativeFile> ReadNative(std::string_view stream) {
    constexpr std::uint16_t kFile = 2;
    std::string_view rest = Slice(stream, 6);
    if (U16(stream, 4) != kFile)
        return std::nullopt;
    const auto takeText = [&rest] {
        const std::string_view text = rest.substr(0, rest.find('\0'));
        rest = Slice(rest, text.size() + 1);
        return text;
    };
    const std::string_view label = takeText();
    takeText(); // its path on the author's machine
    rest = Slice(rest, 4);
    rest = Slice(rest, std::uint64_t{U32(rest, 0)} + 4); // the path of a copy
    NativeFile file{DecodeText(label, DetectCharset(label), label.size()),
                    Slice(rest, 4, U32(rest, 0))};
    if (file.bytes.empty())
        return std::nullopt;
    // Younger programs repeat the texts in Unicode: the path of the copy, the label.
    rest = Slice(rest, 4 + std::uint64_t{U32(rest, 0)});
    rest = Slice(rest, 4 + std::uint64_t{U32(rest, 0)} * 2);
    const std::string_view wide = Slice(rest, 4, std::uint64_t{U32(rest, 0)} * 2);
    if (!wide.empty())
        file.name = DecodeCodePage(wide, kUtf16Page);
    file.name = CleanFileName(file.name);
    return file;
}

struct EndInflate {
    z_stream& stream;
    ~EndInflate() { inflateEnd(&stream); }
};

} // namespace

bool OleObjects::Room(std::uint64_t size) {
    m_bytes += size;
    if (m_bytes <= kMaxMemberBytes)
        return true;
    if (!std::exchange(m_full, true))
        m_sink.Incomplete("embedded documents are larger than what is unpacked");
    return false;
}

void OleObjects::Hand(std::string_view bytes, std::string name) {
    ++m_number;
    const Source source{bytes, name};
    const Kind kind = DetectKind(source);
    if (name.empty()) {
        if (kind == Kind::Unknown || kind == Kind::PlainText || kind == Kind::Media)
            return;
        name = "object " + std::to_string(m_number) + "." + KindName(kind);
    }
    Member member;
    member.path = m_names.Add(std::move(name));
    member.bytes = bytes;
    if (m_members.Wants(member.path))
        m_members.Receive(member);
}

void OleObjects::Take(const CompoundFile& file, std::string_view storage) {
    std::string folder(storage);
    if (!folder.empty())
        folder += '/';
    for (const char* name : {"Package", "EmbeddedOdf", "CONTENTS"})
        if (const auto package = file.Stream(folder + name); package && !package->empty())
            return Room(package->size()) ? Hand(*package, {}) : void();
    if (const auto stream = file.Stream(folder + "\1Ole10Native")) {
        const auto native = ReadNative(*stream);
        if (native && Room(native->bytes.size()))
            Hand(native->bytes, native->name);
        return;
    }
    bool document = false;
    for (const char* name : {"WordDocument", "Workbook", "Book", "PowerPoint Document"})
        document = document || file.Has(folder + name);
    if (!document)
        return;
    CompoundWriter writer;
    writer.Copy(file, storage);
    const std::string bytes = writer.Finish();
    if (Room(bytes.size()))
        Hand(bytes, {});
}

void OleObjects::TakeFile(std::string_view bytes) {
    if (!CompoundFile::Recognises(bytes))
        return;
    try {
        Take(CompoundFile(bytes), {});
    } catch (const ReadError&) {
        m_sink.Incomplete("an embedded document is damaged");
    }
}

void OleObjects::TakePacked(std::string_view packed, std::uint64_t size) {
    if (!Room(size))
        return;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    z_stream stream{};
    if (inflateInit(&stream) != Z_OK)
        throw std::bad_alloc();
    const EndInflate end{stream};
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
    stream.avail_in = static_cast<uInt>(packed.size());
    stream.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_out = static_cast<uInt>(bytes.size());
    static_cast<void>(inflate(&stream, Z_FINISH)); // what comes out before damage is taken
    bytes.resize(static_cast<std::size_t>(stream.total_out));
    TakeFile(bytes);
}

} // namespace engine
