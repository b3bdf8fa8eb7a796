#pragma once

/// A number of movie files recorded faster than they play, and read back frame by frame. A file ends at the first frame
/// beyond `framesPerFile`.
int BenchFreeRunning(int framesPerFile);
/// A recording of that length from the running test picture while thumbnails load without a pause, read back frame by
/// frame; before it the share of the processor that recording takes.
int BenchLiveRecording(int seconds);
/// From the foot on the switch to the file under its own name, beside a click on the button.
int BenchPress();
