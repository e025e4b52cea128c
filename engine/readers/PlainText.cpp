// Reads plain text: prose, source code, configuration, tables, logs.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Charset.h"
#include "engine/readers/Reader.h"

namespace engine {

void ReadPlainText(const Source& source, DocumentSink& sink) {
    if (!LooksLikeText(source.bytes))
        throw ReadError(ReadState::Unknown, "binary data");
    const Charset charset = DetectCharset(source.bytes);
    if (source.bytes.size() <= charset.bomBytes)
        return;
    sink.Open(Block::Preformatted);
    DecodeText(source.bytes, charset, [&sink](std::string_view piece) { sink.Text(piece); });
    sink.Close(Block::Preformatted);
}

} // namespace engine
