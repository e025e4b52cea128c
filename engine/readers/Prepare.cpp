// What the readers' libraries would open on demand, opened beforehand.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/Prepare.h"

#include "engine/readers/ArchiveLocale.h"
#include "engine/readers/MailMime.h"
#include "engine/readers/MediaTags.h"

#include <ctime>
#include <iconv.h>
#include <openssl/crypto.h>

namespace engine {

namespace {

// Kept open for good: the system unloads a table when its last user closes it.
bool OpenCharsets() {
    static constexpr const char* kCharsets[] = {
        "ISO-8859-1",   "ISO-8859-2",   "ISO-8859-3",   "ISO-8859-4",   "ISO-8859-5",
        "ISO-8859-6",   "ISO-8859-7",   "ISO-8859-8",   "ISO-8859-9",   "ISO-8859-10",
        "ISO-8859-13",  "ISO-8859-14",  "ISO-8859-15",  "ISO-8859-16",  "WINDOWS-1250",
        "WINDOWS-1251", "WINDOWS-1252", "WINDOWS-1253", "WINDOWS-1254", "WINDOWS-1255",
        "WINDOWS-1256", "WINDOWS-1257", "WINDOWS-1258", "KOI8-R",       "KOI8-U",
        "CP437",        "CP850",        "CP866",        "MACINTOSH",    "TIS-620",
        "ISO-2022-JP",  "SHIFT_JIS",    "EUC-JP",       "ISO-2022-KR",  "EUC-KR",
        "CP949",        "GB2312",       "GBK",          "GB18030",      "BIG5",
        "UTF-7",        "UTF-16"};
    for (const char* charset : kCharsets)
        static_cast<void>(::iconv_open("UTF-8", charset)); // one that is missing is no harm
    return true;
}

} // namespace

void PrepareReaders() {
    static const bool opened = OpenCharsets();
    static_cast<void>(opened);
    ::tzset(); // times in zip archives are local ones
    InitMime();
    // Else the first digest would look for a configuration.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr);
    PrepareMedia();
    static_cast<void>(Utf8Locale());
}

} // namespace engine
