#pragma once

#include <QString>

class QLineEdit;
class QObject;

/// What an input method is still composing, such as the last syllable of a Korean word: it shows in its text box, but
/// is no part of the box's text yet. Whoever reads a box reads it along, and leaves it where it is: an input method
/// that is told to hand its composition over does so, and some hand it over once more behind that.

/// Follows the compositions of all text boxes from here on. Called once, when the application is made.
void FollowComposition();

/// What is being composed in that text box; empty when nothing is.
QString CompositionIn(const QObject* box);
/// Text and composition of a box of one line, its Hangul composed.
QString TextOf(const QLineEdit& box);

/// Gives up what is being composed in the box, which is about to be filled anew or emptied. The input method begins
/// afresh, and what it still hands over of the old composition goes nowhere.
void DropComposition(const QObject* box);
