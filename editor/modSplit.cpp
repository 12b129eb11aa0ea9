#include "editor/modSplit.h"

#include "util/ErrorLog.h"

#include <algorithm>

namespace modSplit {

void SplitCheckPosition(const DocumentWindow &window, double &position) {
    if (position < kMargin) {
        position = kMargin;
    }
    if (position > window.InnerWidth() - kMargin) {
        position = window.InnerWidth() - kMargin;
    }
}

void SplitSizeControls(DocumentWindow &window, double position) {
    PROC("modSplit SplitSizeControls");
    SplitCheckPosition(window, position);
    const double textWidth = std::max(0.0, window.InnerWidth() - (position + kWidthAllowance));
    window.PlacePanes(position, position, position + kTextOffset, textWidth);
    window.SetBarLeft(position);
}

void SplitMoveStart(DocumentWindow &window) {
    PROC("modSplit SplitMoveStart");
    Document &doc = window.document();
    doc.m_fSplitPosition = static_cast<float>(window.GripLeft());
    window.SetBarLeft(window.GripLeft());
    doc.m_bMovingSplit = true;
    window.ShowBar();
}

void SplitMove(DocumentWindow &window, double position) {
    PROC("modSplit SplitMove");
    if (!window.document().m_bMovingSplit) {
        return;
    }
    SplitCheckPosition(window, position);
    window.SetBarLeft(position);
}

void SplitMoveEnd(DocumentWindow &window) {
    PROC("modSplit SplitMoveEnd");
    if (!window.document().m_bMovingSplit) {
        return;
    }
    // Cleared first: hiding the bar takes its focus, which ends a move.
    window.document().m_bMovingSplit = false;
    SplitSizeControls(window, window.BarLeft());
    window.HideBar();
}

void SplitMoveCancel(DocumentWindow &window) {
    PROC("modSplit SplitMoveCancel");
    if (!window.document().m_bMovingSplit) {
        return;
    }
    window.document().m_bMovingSplit = false;
    window.SetGripLeft(window.document().m_fSplitPosition);
    window.HideBar();
}

} // namespace modSplit
