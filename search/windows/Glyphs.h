// The small pictures of the result window, painted in the colours of the desktop.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QIcon>

namespace velmora {

enum class Glyph {
    All,
    Document,
    Mail,
    Attachment,
    Archive,
    Image,
    Up,
    Down,
    Left,
    Right,
    Open,
    Locate,
    Close
};

// Sharp at every size; follows the palette, in grey where its button is disabled.
QIcon GlyphIcon(Glyph glyph);

} // namespace velmora
