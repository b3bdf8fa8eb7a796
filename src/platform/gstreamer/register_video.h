#pragma once

/// Registers the video control and the options of the video devices. The machine's devices are looked up at the first
/// question for them.
void RegisterVideo();
/// Installs `ShutterSound`. Without it the shutter is silent.
void RegisterShutterSound();
