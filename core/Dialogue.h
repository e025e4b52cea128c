// Telling and asking: every message box, folder chooser, hint and pointer goes through this seam.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QString>

namespace velmora {

enum class Icon { None, Information, Question, Exclamation, Critical };
enum class Answer { Yes, No };
enum class Pointer { Default, Hourglass };

// Who talks to the person: windows, the command line or a test's script.
class Dialogue {
  public:
    virtual ~Dialogue() = default;
    virtual void Tell(const QString& text, const QString& title, Icon icon) = 0;
    virtual Answer Ask(const QString& text, const QString& title, Icon icon) = 0;
    // A folder as logical path, or empty for Cancel. `start` may be empty.
    virtual QString BrowseForFolder(const QString& prompt, const QString& start) = 0;
    // Shows a first-time hint; true when the person wants to see it no more.
    virtual bool ShowHint(int pictureId, const QString& text, const QString& title) = 0;
    virtual void SetPointer(Pointer pointer) = 0;
    virtual Pointer CurrentPointer() const = 0;
};

// The command line's: tells go to standard error, questions are printed with the answer taken.
class TextDialogue : public Dialogue {
  public:
    explicit TextDialogue(Answer answer = Answer::No) : m_answer(answer) {}
    void Tell(const QString& text, const QString& title, Icon icon) override;
    Answer Ask(const QString& text, const QString& title, Icon icon) override;
    QString BrowseForFolder(const QString& prompt, const QString& start) override;
    bool ShowHint(int pictureId, const QString& text, const QString& title) override;
    void SetPointer(Pointer pointer) override { m_pointer = pointer; }
    Pointer CurrentPointer() const override { return m_pointer; }

  private:
    Answer m_answer;
    Pointer m_pointer = Pointer::Default;
};

// Puts a dialogue in force for the lifetime of this object.
class ScopedDialogue {
  public:
    explicit ScopedDialogue(Dialogue& dialogue);
    ~ScopedDialogue();
    ScopedDialogue(const ScopedDialogue&) = delete;
    ScopedDialogue& operator=(const ScopedDialogue&) = delete;

  private:
    Dialogue* m_covered;
};

// The dialogue in force.
Dialogue& CurrentDialogue();

// A message box with an OK button.
void Tell(const QString& text, const QString& title, Icon icon = Icon::Information);
// A message box with Yes and No buttons; closing it counts as No.
[[nodiscard]] Answer Ask(const QString& text, const QString& title, Icon icon = Icon::Question);
// Lets the person pick a folder, beginning at `start` (may be empty). Empty answer on Cancel.
QString BrowseForFolder(const QString& prompt, const QString& start = {});

// Shows the hourglass while it lives, then puts the earlier pointer back.
class Hourglass {
  public:
    explicit Hourglass(Pointer pointer = Pointer::Hourglass);
    ~Hourglass();
    Hourglass(const Hourglass&) = delete;
    Hourglass& operator=(const Hourglass&) = delete;

  private:
    Pointer m_earlier;
};

} // namespace velmora
