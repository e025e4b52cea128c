// Undoes the encryption of old binary workbooks.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

namespace engine {

// The password that spreadsheet programs take where a workbook is only protected against changes:
// such a workbook opens without asking.
inline constexpr std::string_view kWorkbookPassword = "VelvetSweatshop";

// Decrypts a stream of records in place, as its FILEPASS record (whose data is filePass) says;
// version as of BiffVersion. false: another password, or a method that is not known.
[[nodiscard]] bool DecryptWorkbook(std::string& stream, std::string_view filePass, int version,
                                   std::string_view password = kWorkbookPassword);

} // namespace engine
