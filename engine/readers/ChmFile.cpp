// The library for compiled help files, given memory in place of files.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/ChmFile.h"

#include "engine/readers/Limits.h"
#include "engine/readers/Reader.h"

#include <mspack.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <tuple>

namespace engine {
namespace {

// What the library takes for the world: the bytes of one file to read, one text to write into.
struct Memory : mspack_system {
    std::string_view bytes;
    std::string* written = nullptr;
    std::uint64_t room = 0; // for what is written
    bool outOfMemory = false;
};

struct OpenFile : mspack_file {
    Memory* memory = nullptr;
    std::uint64_t at = 0;
    bool writes = false;
};

OpenFile& Of(mspack_file* file) {
    return *static_cast<OpenFile*>(file);
}

mspack_file* Open(mspack_system* self, const char* /*name*/, int mode) {
    auto* const file = new (std::nothrow) OpenFile;
    if (file == nullptr)
        return nullptr;
    file->dummy = 0;
    file->memory = static_cast<Memory*>(self);
    file->writes = mode != MSPACK_SYS_OPEN_READ;
    return file;
}

void Close(mspack_file* file) {
    delete static_cast<OpenFile*>(file);
}

// The library insists on two identifiers in the header. Another compiler of help files, which is
// in wide use, writes the second one wrong.
constexpr std::size_t kIdentifiersAt = 0x18;
constexpr std::array<unsigned char, 32> kIdentifiers{
    0x10, 0xFD, 0x01, 0x7C, 0xAA, 0x7B, 0xD0, 0x11, 0x9E, 0x0C, 0x00, 0xA0, 0xC9, 0x22, 0xE6, 0xEC,
    0x11, 0xFD, 0x01, 0x7C, 0xAA, 0x7B, 0xD0, 0x11, 0x9E, 0x0C, 0x00, 0xA0, 0xC9, 0x22, 0xE6, 0xEC};

void PutIdentifiers(std::size_t at, unsigned char* buffer, std::size_t length) {
    for (std::size_t i = 0; i < kIdentifiers.size(); ++i)
        if (kIdentifiersAt + i >= at && kIdentifiersAt + i - at < length)
            buffer[kIdentifiersAt + i - at] = kIdentifiers[i];
}

int Read(mspack_file* handle, void* buffer, int size) {
    OpenFile& file = Of(handle);
    const std::string_view bytes = file.memory->bytes;
    if (file.writes || size < 0 || file.at > bytes.size())
        return -1;
    const std::size_t length =
        std::min(static_cast<std::size_t>(size), bytes.size() - static_cast<std::size_t>(file.at));
    std::memcpy(buffer, bytes.data() + file.at, length);
    if (file.at < kIdentifiersAt + kIdentifiers.size())
        PutIdentifiers(static_cast<std::size_t>(file.at), static_cast<unsigned char*>(buffer),
                       length);
    file.at += length;
    return static_cast<int>(length);
}

int Write(mspack_file* handle, void* buffer, int size) {
    Memory& memory = *Of(handle).memory;
    if (memory.written == nullptr || size < 0 || static_cast<std::uint64_t>(size) > memory.room)
        return -1;
    try {
        memory.written->append(static_cast<const char*>(buffer), static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
        memory.outOfMemory = true;
        return -1;
    }
    memory.room -= static_cast<std::uint64_t>(size);
    return size;
}

int Seek(mspack_file* handle, off_t offset, int mode) {
    OpenFile& file = Of(handle);
    const auto size = static_cast<off_t>(file.memory->bytes.size());
    const off_t base = mode == MSPACK_SYS_SEEK_START ? 0
                       : mode == MSPACK_SYS_SEEK_CUR ? static_cast<off_t>(file.at)
                                                     : size;
    if (offset < -base || offset > size - base)
        return -1;
    file.at = static_cast<std::uint64_t>(base + offset);
    return 0;
}

off_t Tell(mspack_file* handle) {
    return static_cast<off_t>(Of(handle).at);
}

void Message(mspack_file* /*file*/, const char* /*format*/, ...) {}

void* Allocate(mspack_system* /*self*/, size_t size) {
    return std::malloc(size);
}

void Copy(void* from, void* to, size_t size) {
    std::memcpy(to, from, size);
}

bool IsPacked(const mschmd_file& file) {
    return file.section != nullptr && file.section->id != 0;
}

} // namespace

struct ChmFile::Library {
    Memory memory;
    mschm_decompressor* decompressor = nullptr;
    mschmd_header* header = nullptr;
    std::vector<mschmd_file*> files;

    explicit Library(std::string_view bytes) {
        static_cast<mspack_system&>(memory) = {Open,    Close,    Read,      Write, Seek,   Tell,
                                               Message, Allocate, std::free, Copy,  nullptr};
        memory.bytes = bytes;
    }
    ~Library() {
        if (header != nullptr)
            decompressor->close(decompressor, header);
        if (decompressor != nullptr)
            mspack_destroy_chm_decompressor(decompressor);
    }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // How far into the unpacked bytes a reader may go: past a size that any machine bears, real
    // help files are nowhere packed tighter than this.
    [[nodiscard]] std::uint64_t FarthestByte() const {
        constexpr std::uint64_t kRatio = 100;
        return kRatioFreeBytes + kRatio * memory.bytes.size();
    }
    [[nodiscard]] std::string Extract(mschmd_file* file, bool& whole) {
        std::string content;
        memory.written = &content;
        whole = decompressor->extract(decompressor, file, "") == MSPACK_ERR_OK;
        memory.written = nullptr;
        if (memory.outOfMemory)
            throw std::bad_alloc();
        return content;
    }
};

ChmFile::ChmFile(std::string_view bytes) : m_library(std::make_unique<Library>(bytes)) {
    Library& library = *m_library;
    library.decompressor = mspack_create_chm_decompressor(&library.memory);
    if (library.decompressor == nullptr)
        throw std::bad_alloc();
    library.header = library.decompressor->open(library.decompressor, "");
    if (library.header == nullptr) {
        if (library.decompressor->last_error(library.decompressor) == MSPACK_ERR_NOMEMORY)
            throw std::bad_alloc();
        throw ReadError(ReadState::Damaged, "its directory is damaged");
    }
    for (mschmd_file* file = library.header->files; file != nullptr; file = file->next) {
        if (m_entries.size() == kMaxArchiveEntries)
            throw ReadError(ReadState::Damaged,
                            "has more than " + std::to_string(kMaxArchiveEntries) + " entries");
        std::string_view name = file->filename == nullptr ? "" : file->filename;
        while (name.starts_with('/'))
            name.remove_prefix(1);
        library.files.push_back(file);
        m_entries.push_back(
            {std::string(name), file->length > 0 ? static_cast<std::uint64_t>(file->length) : 0});
    }
}

ChmFile::~ChmFile() = default;

ChmFile::Losses ChmFile::Unpack(std::vector<std::size_t> numbers, const Take& take) {
    Library& library = *m_library;
    const auto place = [&library](std::size_t number) {
        const mschmd_file& file = *library.files[number];
        return std::make_tuple(IsPacked(file), file.offset, number);
    };
    std::sort(numbers.begin(), numbers.end(),
              [&](std::size_t a, std::size_t b) { return place(a) < place(b); });
    Losses losses;
    library.memory.room = kMaxChmBytes;
    off_t packedEnd = 0;
    for (const std::size_t number : numbers) {
        mschmd_file* const file = library.files[number];
        const std::uint64_t length = m_entries[number].length;
        const bool packed = IsPacked(*file);
        // Going back in the packed bytes means unpacking from far before; only a file made to
        // keep its reader busy has entries that overlap.
        if (file->offset < 0 || (packed && file->offset < packedEnd)) {
            ++losses.damaged;
            continue;
        }
        if (length > kMaxMemberBytes || length > library.memory.room ||
            static_cast<std::uint64_t>(file->offset) + length > library.FarthestByte()) {
            ++losses.tooLarge;
            continue;
        }
        bool whole = false;
        std::string content = library.Extract(file, whole);
        losses.damaged += whole ? 0 : 1;
        if (packed)
            packedEnd = file->offset + file->length;
        if (!content.empty())
            take(number, std::move(content));
    }
    return losses;
}

} // namespace engine
