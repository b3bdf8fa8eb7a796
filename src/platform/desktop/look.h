#pragma once

class QApplication;

/// Gives the application the station's colours: light on dark, for a dim room, with the accent where the operator is.
/// A second call changes nothing.
///
/// Two properties tint a widget: `historyNote` a text box that shows a note not to be written in, `remark` a panel of
/// the status bar. Who changes such a property on a widget that already shows must have its style polish it anew.
void ApplyLook(QApplication& application);

/// The pictures and the style sheet lie in this library and must be asked for before use.
void LoadLookResources();
