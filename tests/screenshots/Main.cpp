// Photographs every window in every language, light and dark, and tells what is cut off in it.
// SPDX-License-Identifier: AGPL-3.0-or-later
//
//   screenshots FOLDER [NAME...]      NAME: only windows whose name begins like this
// Files: NAME-LANGUAGE-light|dark.png and one sheet NAME.png of them; at a scale (QT_SCALE_FACTOR)
// the names close in "-125". Ends with 1 when something is cut off or a control has no name.
#include "core/Help.h"
#include "core/Settings.h"
#include "core/windows/WindowDialogue.h"
#include "engine/IndexJob.h"
#include "indexing/IndexedFolders.h"
#include "search/TextQuery.h"
#include "store/ModDb.h"
#include "store/Template.h"
#include "tests/core/Accessible.h"
#include "tests/core/Clipping.h"
#include "tests/core/Place.h"
#include "tests/screenshots/Shots.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPainter>
#include <QStyleFactory>
#include <QTest>
#include <QTimer>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace velmora {

Place& ThePlace() {
    static Place place;
    return place;
}

void TakeModal(const std::function<void()>& open, const Grab& grab) {
    QTimer::singleShot(0, [&] {
        if (QWidget* window = QApplication::activeModalWidget()) {
            grab(*window);
            window->close();
        }
    });
    open();
}

namespace {

constexpr int kPatienceMs = 20'000;
constexpr int kSheetWidth = 620; // of one picture on the sheet

const QPair<const char*, QByteArray> kDocuments[] = {
    {"contract.txt", "Rental contract\n\nThe tenant pays the rent of 850 euro on the first day of "
                     "each month. The rent may be raised once a year.\n\nThe contract ends with "
                     "three months notice.\n"},
    {"Bills/invoice.html", "<html><head><title>Invoice 1234</title></head><body><h1>Invoice</h1>"
                           "<p>Rent of the garage in May</p><table border=1><tr><td>Rent</td>"
                           "<td>90,00</td></tr><tr><td>Water</td><td>12,50</td></tr></table>"},
    {"Letters/letter.eml", "From: anna@example.org\r\nTo: bob@example.org\r\nSubject: Your rent\r\n"
                           "Date: Mon, 6 May 2024 10:00:00 +0200\r\n\r\nDear Bob,\r\nthank you for "
                           "the rent of May.\r\n"},
    {"A document with a name that is longer than most people would ever think of typing.txt",
     "Rented tools"},
};

class RealStage : public Stage {
  public:
    RealStage() {
        const QString archive = ThePlace().Path("home", u"archive"_s);
        QDir().mkpath(archive);
        m_program->gArchivePath = platform::ToLogical(archive);
        m_program->gUserKey = u"DOMAIN.ANNA"_s;
        CreateDatabase(m_program->gArchivePath);
        for (const auto& [name, content] : kDocuments) {
            WriteFile(Docs(QString::fromLatin1(name)), content);
        }
        QFile::copy(QStringLiteral(VELMORA_SOURCE_DIR "/tests/data/office/encryptSHA512.xlsx"),
                    Docs(u"budget.xlsx"_s));
        const QString folder = platform::ToLogical(Docs({}));
        (void)AddIdxdFolderRow(folder, platform::FileName(folder), u"FLDCL"_s);
        SaveSetting(u"FTMessages"_s, u"QS"_s, u"1"_s);
        Index(folder);
    }

    QString Docs(const QString& name) const override {
        const QString folder = ThePlace().Path("home", u"Documents"_s);
        return name.isEmpty() ? folder : folder + u'/' + name;
    }
    engine::SearchResults Search(const QString& request) const override {
        engine::SearchResults results;
        QString typed = request;
        ExecuteSearch(typed, {}, true, false, results);
        return results;
    }
    void WaitUntil(const std::function<bool()>& isSo) const override {
        QElapsedTimer clock;
        clock.start();
        while (!isSo() && clock.elapsed() < kPatienceMs) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents,
                                            50);
        }
    }
    void Speak(Language language) { m_program->gLocaleId = LocaleIdOf(language); }

  private:
    static void Index(const QString& folder) {
        const QString list = ThePlace().Path("home", u"add.txt"_s);
        WriteFile(list, (folder + u"<+>\r\n"_s).toUtf8());
        engine::IndexJob job;
        job.IndexPath = IndexFolder();
        job.AlphabetFile = AlphabetFile();
        job.ToAddFileListName = platform::ToLogical(list);
        job.WorkerProgram = QStringLiteral(VELMORA_BIN_DIR "/velmora-worker");
        if (job.Execute().fault) {
            qFatal("the documents cannot be indexed");
        }
    }

    ScopedGlobals m_program;
    ScopedConnection m_connection;
};

struct Look {
    QString name;
    QPalette palette;
};

QPalette Dark() {
    QPalette dark(QColor(45, 45, 48));
    dark.setColor(QPalette::Base, QColor(30, 30, 32));
    dark.setColor(QPalette::AlternateBase, QColor(38, 38, 41));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                            QPalette::BrightText, QPalette::ToolTipText}) {
        dark.setColor(role, QColor(225, 225, 225));
        dark.setColor(QPalette::Disabled, role, QColor(125, 125, 125));
    }
    dark.setColor(QPalette::PlaceholderText, QColor(140, 140, 140));
    dark.setColor(QPalette::ToolTipBase, QColor(60, 60, 64));
    dark.setColor(QPalette::Link, QColor(105, 170, 255));
    dark.setColor(QPalette::Highlight, QColor(45, 105, 180));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    return dark;
}

class Photographer {
  public:
    Photographer(const QString& folder, RealStage& stage) : m_folder(folder), m_stage(stage) {
        const qreal scale = qEnvironmentVariable("QT_SCALE_FACTOR", u"1"_s).toDouble();
        m_suffix = scale == 1 ? QString() : u'-' + QString::number(qRound(scale * 100));
    }

    void Take(const Shot& shot) {
        QList<QImage> pictures;
        for (const Look& look :
             {Look{u"light"_s, QStyleFactory::create(u"Fusion"_s)->standardPalette()},
              Look{u"dark"_s, Dark()}}) {
            QApplication::setPalette(look.palette);
            for (const Language language : {Language::Italian, Language::English, Language::German,
                                            Language::Spanish, Language::French}) {
                m_stage.Speak(language);
                const QString name =
                    shot.name + u'-' + FolderOfLanguage(language) + u'-' + look.name + m_suffix;
                const qsizetype before = pictures.size();
                shot.take(m_stage,
                          [&](QWidget& window) { pictures.append(Picture(window, name)); });
                if (pictures.size() != before + 1) {
                    Complain(name, u"no picture"_s);
                }
            }
        }
        SaveSheet(shot.name, pictures);
    }
    [[nodiscard]] bool HasComplained() const { return m_hasComplained; }

  private:
    QImage Picture(QWidget& window, const QString& name) {
        (void)QTest::qWaitForWindowExposed(&window);
        for (int round = 0; round < 3; ++round) { // layouts settle one by one
            QCoreApplication::processEvents();
        }
        for (const QString& cut : ClippedTexts(window)) {
            Complain(name, u"cut off: "_s + cut);
        }
        for (const QString& control : NamelessControls(window)) {
            Complain(name, u"without a name: "_s + control);
        }
        QImage picture = window.grab().toImage();
        if (!picture.save(m_folder + u'/' + name + u".png"_s)) {
            Complain(name, u"cannot be written"_s);
        }
        return picture;
    }

    // Languages side by side, light above dark.
    void SaveSheet(const QString& name, QList<QImage>& pictures) {
        constexpr int kColumns = 5;
        constexpr int kGap = 8;
        QSize cell;
        for (QImage& picture : pictures) {
            picture.setDevicePixelRatio(1);
            if (picture.width() > kSheetWidth) {
                picture = picture.scaledToWidth(kSheetWidth, Qt::SmoothTransformation);
            }
            cell = cell.expandedTo(picture.size());
        }
        const int rows = static_cast<int>(pictures.size() + kColumns - 1) / kColumns;
        QImage sheet(kColumns * (cell.width() + kGap), rows * (cell.height() + kGap),
                     QImage::Format_RGB32);
        sheet.fill(Qt::gray);
        QPainter painter(&sheet);
        for (int at = 0; at < pictures.size(); ++at) {
            painter.drawImage(at % kColumns * (cell.width() + kGap),
                              at / kColumns * (cell.height() + kGap), pictures.at(at));
        }
        painter.end();
        sheet.save(m_folder + u'/' + name + m_suffix + u".png"_s);
    }

    void Complain(const QString& name, const QString& what) {
        m_hasComplained = true;
        std::printf("%s: %s\n", qPrintable(name), qPrintable(what));
    }

    QString m_folder;
    QString m_suffix;
    RealStage& m_stage;
    bool m_hasComplained = false;
};

int Run(const QString& folder, const QStringList& wanted) {
    WindowDialogue dialogue;
    WindowReporter reporter;
    const ScopedDialogue dialogueInForce(dialogue);
    const ScopedReporter reporterInForce(reporter);
    RealStage stage;
    Photographer photographer(folder, stage);
    for (const Shot& shot :
         CoreShots() + StoreShots() + IndexingShots() + SearchShots() + MainShots()) {
        const bool isWanted =
            wanted.isEmpty() || std::any_of(wanted.begin(), wanted.end(), [&](const QString& name) {
                return shot.name.startsWith(name);
            });
        if (isWanted) {
            photographer.Take(shot);
        }
    }
    return photographer.HasComplained() ? 1 : 0;
}

} // namespace
} // namespace velmora

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: screenshots FOLDER [NAME...]\n", stderr);
        return 2;
    }
    velmora::ThePlace();
    qputenv("VELMORA_WORKER", VELMORA_BIN_DIR "/velmora-worker");
    const QApplication application(argc, argv);
    QApplication::setStyle(u"Fusion"_s);
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QApplication::arguments();
    QDir().mkpath(arguments.at(1));
    return velmora::Run(arguments.at(1), arguments.mid(2));
}
