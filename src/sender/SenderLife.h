#pragma once

/// One sender's life: it is the only one of its user and machine, reads the setup, brings what waits to the server, and
/// ends when nothing is left that could go. False when it had to end before that: another one is to go on. Throws
/// PlatformError for a queue that can't be opened.
bool LiveAsSender();
