#pragma once

/// Registers the image control under its component name.
void RegisterImageControl();
