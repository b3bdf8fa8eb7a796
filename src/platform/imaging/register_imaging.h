#pragma once

/// Installs the picture reader.
void RegisterImaging();
