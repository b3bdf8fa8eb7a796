#pragma once

/// The program that brings pictures to the clinic's server: one for each user and machine, without a screen.
class SenderProcess
{
public:
    virtual ~SenderProcess() = default;

    /// Sees to it that one runs, which goes on when this program ends; one that runs already stays the only one.
    /// `isAgain`: an earlier call hasn't brought one up. May block for seconds, on any thread. Throws PlatformError
    /// when it can't be started.
    virtual void Start(bool isAgain) = 0;
};
