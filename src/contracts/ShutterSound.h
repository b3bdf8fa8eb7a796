#pragma once

/// What the operator hears of a still while he looks at the picture.
class ShutterSound
{
public:
    enum Kind {
        Safe,    ///< File and rows are safe.
        Waiting, ///< They have to wait for the share or the database.
    };

    virtual ~ShutterSound() = default;
    /// Softly, and returns at once. A machine without sound stays silent.
    virtual void Play(Kind kind) = 0;
};
