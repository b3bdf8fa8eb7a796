#pragma once

#include <QString>

class QObject;

/// What an input method is still composing, such as the last syllable of a Korean word: it shows in its text box, but
/// is no part of the box's text yet.

/// Follows the compositions of all text boxes from here on. Called once, when the application is made.
void FollowComposition();

/// Ends the composition that is under way, wherever it is: what is composed becomes text. Every command of the operator
/// begins with this; what comes by itself (frames, timers, a foot on the switch) never does it, since somebody may be
/// typing.
void CommitComposition();

/// What is being composed in that text box; empty when nothing is.
QString CompositionIn(const QObject* box);
