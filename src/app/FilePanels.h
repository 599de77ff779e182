#pragma once

#include <QStringList>
#include <functional>

class QWidget;

// The open and save panels of the pages, window-modal and opened without blocking. Each
// answers like a Cocoa panel: a return code (1 = chosen, 0 = cancelled) and the chosen
// paths in order. A test puts its own answer in place of the dialogs.
class FilePanels {
public:
    enum class Kind {
        Bundles, // kexts and other bundles to install, several at once
        Kext,    // one kext to check
        Mkext,   // one mkext archive to list
        Folder,  // a folder to unpack into (new ones may be made)
        Report,  // where to save the system report; `defaultName` is offered
    };
    using Done = std::function<void(int returnCode, const QStringList &paths)>;
    using Answer = std::function<void(Kind kind, const QString &defaultName, Done done)>;

    explicit FilePanels(QWidget *window) : m_window(window) {}

    void open(Kind kind, Done done, const QString &defaultName = {});
    void setAnswer(Answer answer) { m_answer = std::move(answer); }

private:
    QWidget *m_window;
    Answer m_answer;
};
