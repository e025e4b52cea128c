// Reads PPT, POT and PPS.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "engine/readers/CodePage.h"
#include "engine/readers/CompoundFile.h"
#include "engine/readers/LittleEndian.h"
#include "engine/readers/OleObjects.h"
#include "engine/readers/OleProperties.h"
#include "engine/readers/PptObjects.h"
#include "engine/readers/PptShape.h"
#include "engine/readers/PptText.h"
#include "engine/readers/Reader.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace engine {
namespace {

using namespace std::string_view_literals;

constexpr int kDeepest = 32; // records within records

enum Type : std::uint16_t {
    kDocument = 0x03E8,
    kSlide = 0x03EE,
    kNotes = 0x03F0,
    kNotesHead = 0x03F1,
    kSlidePlace = 0x03F3,
    kObjectList = 0x0409,
    kDrawing = 0x040C,
    kString = 0x0FBA,
    kObjectHead = 0x0FC3,
    kEmbedded = 0x0FCC,
    kMargins = 0x0FD9,
    kSlideList = 0x0FF0,
    kObject = 0x1011,
    kTags = 0x1388,
    kTag = 0x138A,
    kTagData = 0x138B,
    kComment = 0x2EE0,
    kDrawingOfSlide = 0xF002,
    kGroup = 0xF003,
    kShape = 0xF004,
};

// One slide as the document's list has it.
struct ListedSlide {
    std::uint32_t object = 0, id = 0;
    PptTexts texts; // those that its shapes only refer to
};

class PptReading {
  public:
    PptReading(std::string_view document, std::string_view user, DocumentSink& sink)
        : m_bytes(document), m_objects(document, user), m_sink(sink), m_flow(sink),
          m_left(document.size()) {}

    void Run() {
        const auto document = m_objects.Document();
        if (document && document->type == kDocument)
            ReadDocument(document->payload);
        for (ListedSlide& slide : m_slides)
            Slide(slide);
        if (m_slides.empty())
            ReadWhatIsThere();
        Margin(m_margins);
        m_flow.Finish();
    }

    // What is embedded; behind Run.
    void HandObjects(OleObjects& objects) const;

  private:
    void ReadDocument(std::string_view payload);
    void ReadSlideList(std::string_view payload);
    void ReadNotesList(std::string_view payload);
    void ReadWhatIsThere();
    void Slide(ListedSlide& slide);
    [[nodiscard]] bool Room(std::string_view payload);
    void SlideContent(std::string_view payload, std::vector<PptText>& listed);
    void Shapes(std::string_view payload, std::vector<PptText>& listed, int depth);
    void PutShape(PptShape shape, std::vector<PptText>& listed);
    void PutTexts(std::vector<PptText>& texts, std::vector<PptText>& listed);
    bool PutTable(std::string_view group, std::vector<PptText>& listed);
    void Notes(std::string_view payload);
    void Comments(std::string_view payload, int depth);
    void Margin(std::string_view payload);

    std::string_view m_bytes;
    const PptObjects m_objects;
    DocumentSink& m_sink;
    Flow m_flow;
    std::vector<ListedSlide> m_slides;
    std::map<std::uint32_t, std::string_view> m_notes; // by the id of their slide
    std::string_view m_margins;                        // of slides that have none of their own
    std::set<std::string> m_marginTexts;               // shown already
    std::size_t m_left; // bytes of slides and notes still read: hostile ones lie upon each other
    bool m_inNotes = false;
    int m_number = 0;
};

void PptReading::ReadDocument(std::string_view payload) {
    ForEachRecord(payload, [this](const OfficeRecord& record) {
        enum : std::uint16_t { kOfSlides = 0, kOfNotes = 2, kMarginsOfSlides = 3 };
        if (record.type == kSlideList && record.instance == kOfSlides)
            ReadSlideList(record.payload);
        else if (record.type == kSlideList && record.instance == kOfNotes)
            ReadNotesList(record.payload);
        else if (record.type == kMargins && record.instance == kMarginsOfSlides)
            m_margins = record.payload;
    });
}

void PptReading::ReadSlideList(std::string_view payload) {
    ForEachRecord(payload, [this](const OfficeRecord& record) {
        if (record.type == kSlidePlace)
            m_slides.push_back({U32(record.payload, 0), U32(record.payload, 12), {}});
        else if (!m_slides.empty())
            m_slides.back().texts.Take(record);
    });
}

void PptReading::ReadNotesList(std::string_view payload) {
    ForEachRecord(payload, [this](const OfficeRecord& record) {
        if (record.type != kSlidePlace)
            return;
        const auto notes = m_objects.Find(U32(record.payload, 0));
        if (!notes || notes->type != kNotes)
            return;
        const OfficeRecord head = ReadOfficeRecord(notes->payload);
        if (head.type == kNotesHead)
            m_notes.emplace(U32(head.payload, 0), notes->payload);
    });
}

// Without its list: all slides and notes that the stream holds, in the order of the stream.
void PptReading::ReadWhatIsThere() {
    constexpr auto kSlideMark = "\x0F\0\xEE\x03"sv, kNotesMark = "\x0F\0\xF0\x03"sv,
                   kListMark = "\x0F\0\xF0\x0F"sv;
    bool any = false;
    for (std::size_t at = 0; at + 8 <= m_bytes.size();) {
        at = m_bytes.find("\x0F\0"sv, at);
        const std::string_view rest = Slice(m_bytes, at);
        std::vector<PptText> none;
        if (rest.starts_with(kSlideMark)) {
            m_flow.Open(Block::Page, ++m_number);
            SlideContent(ReadOfficeRecord(rest).payload, none);
            m_flow.Close(Block::Page);
        } else if (rest.starts_with(kNotesMark)) {
            Notes(ReadOfficeRecord(rest).payload);
        } else if (rest.starts_with(kListMark)) {
            std::vector<PptText> texts = ReadPptTexts(ReadOfficeRecord(rest).payload);
            PutTexts(texts, none);
        } else {
            at = std::min(at, m_bytes.size() - 2) + 2;
            continue;
        }
        any = true;
        at += std::max<std::size_t>(ReadOfficeRecord(rest).size, 2);
    }
    if (any)
        m_sink.Incomplete("the list of the slides is damaged");
}

void PptReading::Slide(ListedSlide& slide) {
    m_flow.Open(Block::Page, ++m_number);
    std::vector<PptText>& listed = slide.texts.All();
    const auto object = m_objects.Find(slide.object);
    if (!object || object->type != kSlide)
        m_sink.Incomplete("slide " + std::to_string(m_number) + " is missing");
    else if (Room(object->payload))
        SlideContent(object->payload, listed);
    for (const PptText& text : listed) // those that no shape refers to
        PutPptText(text, true, m_flow);
    if (const auto notes = m_notes.find(slide.id); notes != m_notes.end()) {
        if (Room(notes->second))
            Notes(notes->second);
        m_notes.erase(notes);
    }
    m_flow.Close(Block::Page);
}

bool PptReading::Room(std::string_view payload) {
    if (payload.size() > m_left) {
        if (m_left > 0)
            m_sink.Incomplete("slides refer to more than the file holds");
        m_left = 0;
        return false;
    }
    m_left -= payload.size();
    return true;
}

void PptReading::SlideContent(std::string_view payload, std::vector<PptText>& listed) {
    Shapes(payload, listed, 0);
    ForEachRecord(payload, [this](const OfficeRecord& record) {
        if (record.type == kMargins)
            Margin(record.payload);
    });
    Comments(payload, 0);
}

void PptReading::Shapes(std::string_view payload, std::vector<PptText>& listed, int depth) {
    if (depth >= kDeepest)
        return;
    ForEachRecord(payload, [&](const OfficeRecord& record) {
        if (record.type == kShape)
            PutShape(ReadPptShape(record.payload), listed);
        else if (record.type == kGroup && PutTable(record.payload, listed))
            return;
        else if (record.type == kDrawing || record.type == kDrawingOfSlide || record.type == kGroup)
            Shapes(record.payload, listed, depth + 1);
    });
}

void PptReading::PutShape(PptShape shape, std::vector<PptText>& listed) {
    constexpr std::uint8_t kFirstMargin = 7, kLastMargin = 10; // date, number, footer, header
    if (m_inNotes && shape.placeholder >= kFirstMargin && shape.placeholder <= kLastMargin)
        return;
    PutTexts(shape.texts, listed);
    for (const std::string& words : {shape.words.wordArt, shape.words.description}) {
        if (m_inNotes || words.empty())
            continue;
        m_flow.Open(Block::Paragraph);
        m_flow.Collapse(words);
        m_flow.Close(Block::Paragraph);
    }
}

void PptReading::PutTexts(std::vector<PptText>& texts, std::vector<PptText>& listed) {
    for (PptText& text : texts) {
        if (text.outline && *text.outline < listed.size()) {
            PptText& meant = listed[*text.outline];
            meant.title = meant.title || text.title;
            PutPptText(meant, !m_inNotes, m_flow);
            meant = {};
        }
        PutPptText(text, !m_inNotes, m_flow);
    }
}

// The cells of a table are shapes; where they stand tells the rows.
bool PptReading::PutTable(std::string_view group, std::vector<PptText>& listed) {
    const OfficeRecord first = ReadOfficeRecord(group);
    if (first.type != kShape || !ReadPptShape(first.payload).words.table)
        return false;
    std::vector<PptShape> cells;
    ForEachRecord(Slice(group, first.size), [&cells](const OfficeRecord& record) {
        if (record.type != kShape)
            return;
        PptShape cell = ReadPptShape(record.payload);
        if (cell.hasText)
            cells.push_back(std::move(cell));
    });
    std::stable_sort(cells.begin(), cells.end(), [](const PptShape& a, const PptShape& b) {
        return std::pair(a.top, a.left) < std::pair(b.top, b.left);
    });
    m_flow.Open(Block::Table);
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i == 0 || cells[i].top != cells[i - 1].top)
            m_flow.Open(Block::Row);
        m_flow.Open(Block::Cell);
        PutTexts(cells[i].texts, listed);
        m_flow.Close(Block::Cell);
    }
    m_flow.Close(Block::Table);
    return true;
}

void PptReading::Notes(std::string_view payload) {
    m_inNotes = true;
    m_flow.Open(Block::Note);
    std::vector<PptText> none;
    Shapes(payload, none, 0);
    m_flow.Close(Block::Note);
    m_inNotes = false;
}

// They stand in a tag that a later version of the format has added.
void PptReading::Comments(std::string_view payload, int depth) {
    if (depth >= kDeepest)
        return;
    ForEachRecord(payload, [&](const OfficeRecord& record) {
        if (record.type == kTags || record.type == kTag || record.type == kTagData)
            return Comments(record.payload, depth + 1);
        if (record.type != kComment)
            return;
        ForEachRecord(record.payload, [this](const OfficeRecord& part) {
            constexpr std::uint16_t kText = 1; // 0 is the author, 2 the initials
            if (part.type != kString || part.instance != kText)
                return;
            std::string text;
            AppendUtf16(text, part.payload);
            m_flow.Open(Block::Note);
            m_flow.Collapse(text);
            m_flow.Close(Block::Note);
        });
    });
}

// Date, header and footer, each text once.
void PptReading::Margin(std::string_view payload) {
    ForEachRecord(payload, [this](const OfficeRecord& record) {
        if (record.type != kString)
            return;
        std::string text;
        AppendUtf16(text, record.payload);
        if (text.empty() || !m_marginTexts.insert(text).second)
            return;
        m_flow.Open(Block::Paragraph);
        m_flow.Collapse(text);
        m_flow.Close(Block::Paragraph);
    });
}

void PptReading::HandObjects(OleObjects& objects) const {
    const auto document = m_objects.Document();
    std::set<std::uint32_t> seen;
    std::size_t left = m_bytes.size();
    const auto hand = [&](std::uint32_t number) {
        constexpr std::uint16_t kPacked = 1;
        const auto object = m_objects.Find(number);
        if (!object || object->type != kObject || object->size > left ||
            !seen.insert(number).second)
            return;
        left -= object->size;
        if (object->instance == kPacked)
            objects.TakePacked(Slice(object->payload, 4), U32(object->payload, 0));
        else
            objects.TakeFile(object->payload);
    };
    ForEachRecord(document ? document->payload : std::string_view(), [&](const OfficeRecord& list) {
        if (list.type != kObjectList)
            return;
        ForEachRecord(list.payload, [&](const OfficeRecord& embedded) {
            if (embedded.type != kEmbedded)
                return;
            ForEachRecord(embedded.payload, [&](const OfficeRecord& head) {
                if (head.type == kObjectHead)
                    hand(U32(head.payload, 16));
            });
        });
    });
}

} // namespace

void ReadPpt(const Source& source, DocumentSink& sink, MemberSink& attachments) {
    const CompoundFile file(source.bytes);
    if (file.IsProtected())
        throw ReadError(ReadState::Encrypted, "needs a password");
    // A file for two generations of programs holds the newer document in a folder.
    const std::string folder = file.Has("PowerPoint Document") ? "" : "PP97_DUALSTORAGE/";
    const auto document = file.Stream(folder + "PowerPoint Document");
    if (!document)
        throw ReadError(ReadState::Unknown, "a presentation in a format of before 1997");
    PptReading reading(*document, file.Stream(folder + "Current User").value_or(""), sink);
    ReadOleProperties(file, sink);
    reading.Run();
    OleObjects objects(attachments, sink);
    reading.HandObjects(objects);
}

} // namespace engine
