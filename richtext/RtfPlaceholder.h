#pragma once

class QTextDocument;

// Draws the placeholders of content the text pane cannot render (metafile pictures, embedded
// objects, binary data) as a framed box with their description. Installs itself once per
// document layout; calling it again is harmless.
void installPlaceholderHandler(QTextDocument *doc);
