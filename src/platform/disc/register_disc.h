#pragma once

/// Registers the CD writer, the list of drives and the copying of files, and installs the writer's options.
void RegisterDisc();
