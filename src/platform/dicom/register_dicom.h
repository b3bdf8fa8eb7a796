#pragma once

/// Registers the DICOM kit. It uses the desktop and the file service.
void RegisterDicom();
