#include "editor/WindowTextBuffer.h"

#include <QEvent>
#include <QScrollBar>
#include <QTextEdit>

void WindowTextBuffer::SetTextRTF(const QByteArray &rtf) {
    if (aboutToLoad) {
        aboutToLoad(rtf);
    }
    // A screenful: lines no lower than 8 pixels, characters no narrower than 4 (a paragraph
    // takes one line at least).
    if (m_pPane && m_pPane->isVisible()) {
        const QSize shown = m_pPane->viewport()->size();
        const int lines = shown.height() / 8 + 1;
        SetPreviewSize(lines * (shown.width() / 4 + 1), lines);
    } else {
        SetPreviewSize(0, 1);
    }
    RichTextBuffer::SetTextRTF(rtf);
    if (loaded) {
        loaded();
    }
}

void WindowTextBuffer::showIn(QTextEdit *pane) {
    m_pPane = pane;
    pane->setDocument(documentAsShown());
    for (QObject *o : {static_cast<QObject *>(pane), static_cast<QObject *>(pane->viewport()),
                       static_cast<QObject *>(pane->verticalScrollBar()),
                       static_cast<QObject *>(pane->horizontalScrollBar())}) {
        o->installEventFilter(this);
    }
}

bool WindowTextBuffer::eventFilter(QObject *, QEvent *event) {
    if (!Partial()) {
        return false;
    }
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::DragEnter:
    case QEvent::Drop:
    case QEvent::ContextMenu:
        CompleteText();
        break;
    default:
        break;
    }
    return false;
}
