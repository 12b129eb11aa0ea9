#pragma once

#include "document/Document.h"

// A document window as the splitter and the View commands see it: the outline on the left, the
// grip between the panes, the bar drawn while the splitter moves, and the text on the right.
// Positions and sizes are in twips.
class DocumentWindow : public DocumentView {
public:
    virtual Document &document() = 0;
    virtual double InnerWidth() const = 0;
    virtual double InnerHeight() const = 0;
    // Places the panes: the outline at the left edge, the grip and the text, all as high as the
    // window's inside.
    virtual void PlacePanes(double outlineWidth, double gripLeft, double textLeft,
                            double textWidth) = 0;
    virtual double OutlineWidth() const = 0;
    virtual double GripLeft() const = 0;
    virtual void SetGripLeft(double left) = 0;
    virtual double BarLeft() const = 0;
    virtual void SetBarLeft(double left) = 0;
    // The bar over the grip (half its width, 20 twips shorter), shown and given the focus; or
    // hidden.
    virtual void ShowBar() = 0;
    virtual void HideBar() = 0;
    // The width the showing labels need, with indentation, icon and scroll bar.
    virtual double RequiredOutlineWidth() const = 0;
    // The focus to the outline or the text, when that pane is enabled.
    virtual void FocusOutline() = 0;
    virtual void FocusText() = 0;
};

// The splitter between a document window's outline and text.
namespace modSplit {

inline constexpr double kMargin = 1500;        // from either edge of the window
inline constexpr double kTextOffset = 40;      // the text starts this far right of the splitter
inline constexpr double kWidthAllowance = 140; // text width: inner width less outline and this
inline constexpr double kKeyboardStep = 100;   // Left and Right while moving

// Clamps a position to [margin, inner width - margin]; a window narrower than two margins gets
// inner width - margin.
void SplitCheckPosition(const DocumentWindow &window, double &position);
// Lays the window out for a splitter at `position` (clamped first).
void SplitSizeControls(DocumentWindow &window, double position);
// The move: the bar appears over the grip and takes the keys; it ends at the bar's position or
// is cancelled with the grip back where it was and the panes unchanged.
void SplitMoveStart(DocumentWindow &window);
void SplitMove(DocumentWindow &window, double position);
void SplitMoveEnd(DocumentWindow &window);
void SplitMoveCancel(DocumentWindow &window);

} // namespace modSplit
