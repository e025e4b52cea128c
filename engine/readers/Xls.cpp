// Reads the binary workbooks that came before XLSX, in a compound file or as a bare stream.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/BiffRecords.h"
#include "engine/readers/CompoundFile.h"
#include "engine/readers/LittleEndian.h"
#include "engine/readers/OleObjects.h"
#include "engine/readers/OleProperties.h"
#include "engine/readers/Reader.h"
#include "engine/readers/XlsCipher.h"
#include "engine/readers/XlsSheet.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace engine {
namespace {

class XlsReading {
  public:
    XlsReading(std::string stream, DocumentSink& sink)
        : m_stream(std::move(stream)), m_sink(sink), m_flow(sink), m_sheetFlow(m_flow),
          m_book(VersionOf(m_stream)) {}

    void Run() {
        constexpr std::uint16_t kGlobals = 0x0005, kGlobals4 = 0x0100;
        const std::uint16_t substream = U16(m_stream, 6);
        Unlock();
        if (m_book.version >= 5 && substream == kGlobals) {
            ReadGlobals();
            ReadSheets();
        } else if (m_book.version == 4 && substream == kGlobals4) {
            ReadBundle();
        } else {
            ReadSheet({}, 0);
        }
        m_flow.Finish();
        if (m_broken)
            m_sink.Incomplete("the end of the workbook is missing");
    }

  private:
    static int VersionOf(std::string_view stream) {
        const int version = BiffVersion(stream);
        if (version == 0)
            throw ReadError(ReadState::Damaged, "the workbook has no beginning");
        return version;
    }

    // Decrypts the stream where a record in front of the first substream's cells asks for it.
    void Unlock() {
        BiffReader records(m_stream);
        BiffRecord record;
        constexpr int kFarthest = 20; // it stands among the first
        for (int i = 0; i < kFarthest && records.Next(record); ++i) {
            if (record.type != Biff::FilePass)
                continue;
            if (!DecryptWorkbook(m_stream, std::string(record.data), m_book.version))
                throw ReadError(ReadState::Encrypted, "needs a password");
            return;
        }
    }

    void ReadGlobals() {
        BiffReader records(m_stream);
        BiffRecord record;
        while (records.Next(record) && record.type != Biff::Eof)
            m_book.Take(record);
        m_broken = m_broken || records.Broken();
        if (m_book.shared.Full())
            m_sink.Incomplete(SharedTexts::kFullReason);
    }

    void ReadSheets() {
        // Sheets of a sound workbook do not overlap; a hostile one reads the same cells for ever.
        std::size_t left = m_stream.size() * 2;
        for (const XlsBook::Sheet& sheet : m_book.sheets) {
            if (sheet.program)
                continue;
            if (!IsBof(static_cast<Biff>(U16(m_stream, sheet.at)))) {
                m_sink.Incomplete("the sheet " + sheet.name + " is missing");
                continue;
            }
            if (left == 0) {
                m_sink.Incomplete("its sheets overlap");
                break;
            }
            const std::size_t size = ReadSheet(sheet.name, sheet.at) - sheet.at;
            left -= std::min(left, size);
        }
    }

    // Version 4 has the sheets of a workbook behind each other, each after its name.
    void ReadBundle() {
        std::size_t at = 0;
        BiffReader records(m_stream);
        BiffRecord record;
        std::string name;
        bool first = true;
        while (records.Next(record)) {
            if (record.type == Biff::SheetHeader4) {
                BiffCursor cursor(record);
                cursor.Skip(4);
                name = m_book.ShortText(cursor);
            } else if (IsBof(record.type) && !std::exchange(first, false)) {
                at = ReadSheet(name, record.at);
                records = BiffReader(m_stream, std::max(at, record.at + 4));
            } else {
                m_book.Take(record);
            }
        }
    }

    // Answers where it ended, at or behind at.
    std::size_t ReadSheet(const std::string& name, std::size_t at) {
        BiffReader records(m_stream, at);
        m_sheetFlow.Begin(++m_number, name);
        const std::size_t end = XlsSheet(m_book, m_sheetFlow).Read(records);
        m_sheetFlow.End();
        m_broken = m_broken || records.Broken();
        return std::max(end, at);
    }

    std::string m_stream;
    DocumentSink& m_sink;
    Flow m_flow;
    SheetFlow m_sheetFlow;
    XlsBook m_book;
    int m_number = 0;
    bool m_broken = false;
};

} // namespace

void ReadXls(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    if (!CompoundFile::Recognises(source.bytes)) {
        XlsReading(std::string(source.bytes), sink).Run();
        return;
    }
    const CompoundFile file(source.bytes);
    // A file for two generations of programs holds both forms.
    std::optional<std::string> stream = file.Stream("Workbook");
    if (!stream.has_value())
        stream = file.Stream("Book");
    if (!stream.has_value())
        throw ReadError(ReadState::Damaged, "the workbook is missing");
    ReadOleProperties(file, sink);
    XlsReading(std::move(*stream), sink).Run();
    OleObjects objects(attachments, sink);
    for (const CompoundFile::Entry& entry : file.List())
        if (entry.storage && entry.name.starts_with("MBD"))
            objects.Take(file, entry.name);
}

} // namespace engine
