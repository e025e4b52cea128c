// Pictures that stand as text inside a document.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

// Decodes base64; blanks and what is no base64 are passed over.
[[nodiscard]] std::string DecodeBase64(std::string_view text);

// Decodes "data:image/png;base64,…". false: another form, larger than a picture may be, or a
// picture that can hold programs (SVG).
bool DecodeDataAddress(std::string_view address, std::string& mime, std::string& bytes);

// The media type of a picture that pages can show, by its file name's ending; empty otherwise.
[[nodiscard]] std::string PictureType(std::string_view fileName);

} // namespace engine
