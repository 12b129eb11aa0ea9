#pragma once

#include "richtext/RichTextBuffer.h"

#include <functional>

class QTextEdit;

// The document's text pane as the window shows it. A long text is shown a screenful first (the
// pane's size says how much that is) and read whole right after the pane has painted it;
// anything the user does in the pane waits for the whole text.
class WindowTextBuffer : public RichTextBuffer {
public:
    using RichTextBuffer::RichTextBuffer;
    void SetTextRTF(const QByteArray &rtf) override;
    // The pane that shows the document: its size sets how much of a long text comes first, and
    // its input is held until the text is whole.
    void showIn(QTextEdit *pane);
    // Called before and after each text is put into the pane.
    std::function<void(const QByteArray &)> aboutToLoad;
    std::function<void()> loaded;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QTextEdit *m_pPane = nullptr;
};
