#pragma once

class QDialog;

/// Puts a popup where its caller wants it, in twips from the corner of its parent, but wholly on the screen.
void PlacePopup(QDialog& popup, int leftTwips, int topTwips);
