// Packing of the answer's frames.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Frames.h"

namespace engine {

std::string Pack(const DocumentHead& head) {
    return Packer()
        .Text(head.path)
        .Text(head.display)
        .Number(static_cast<std::uint64_t>(head.modified))
        .Number(head.size)
        .Number(head.kind)
        .Bytes();
}

DocumentHead UnpackHead(std::string_view bytes) {
    Unpacker unpack(bytes);
    DocumentHead head;
    head.path = unpack.Text();
    head.display = unpack.Text();
    head.modified = static_cast<std::int64_t>(unpack.Number());
    head.size = unpack.Number();
    head.kind = static_cast<std::uint8_t>(unpack.Number());
    return head;
}

std::string Pack(const TextChunk& chunk) {
    return Packer()
        .Number(chunk.plainLength)
        .Number(chunk.wordCount)
        .Text(chunk.terms)
        .Text(chunk.text)
        .Text(chunk.vocabulary)
        .Bytes();
}

TextChunk UnpackChunk(std::string_view bytes) {
    Unpacker unpack(bytes);
    TextChunk chunk;
    chunk.plainLength = unpack.Number();
    chunk.wordCount = unpack.Number();
    chunk.terms = unpack.Text();
    chunk.text = unpack.Text();
    chunk.vocabulary = unpack.Text();
    return chunk;
}

std::string Pack(const DocumentEnd& end) {
    Packer pack;
    pack.Number(static_cast<std::uint64_t>(end.state)).Text(end.reason).Number(end.words);
    pack.Number(end.fields.size());
    for (const FieldRange& field : end.fields)
        pack.Text(field.name).Text(field.value).Number(field.first).Number(field.last);
    return pack.Bytes();
}

DocumentEnd UnpackEnd(std::string_view bytes) {
    Unpacker unpack(bytes);
    DocumentEnd end;
    const std::uint64_t state = unpack.Number();
    if (state > static_cast<std::uint64_t>(ReadState::Failed))
        throw std::runtime_error("a worker's answer holds an unknown state");
    end.state = static_cast<ReadState>(state);
    end.reason = unpack.Text();
    end.words = unpack.Number();
    for (std::uint64_t left = unpack.Number(); left > 0; --left) {
        FieldRange field;
        field.name = unpack.Text();
        field.value = unpack.Text();
        field.first = unpack.Number();
        field.last = unpack.Number();
        end.fields.push_back(std::move(field));
    }
    return end;
}

std::string EscapeMarks(std::string_view name) {
    std::string escaped;
    for (const char c : name) {
        if (c == '>')
            escaped += "\xEF\x80\xBE"; // U+F03E
        else if (c == '|')
            escaped += "\xEF\x81\xBC"; // U+F07C
        else if (c == '\\')
            escaped += "\xEF\x81\x9C"; // U+F05C
        else if (c == '/')
            escaped += '\\';
        else
            escaped += c;
    }
    return escaped;
}

} // namespace engine
