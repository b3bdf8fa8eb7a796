#pragma once

/// Opens the station for the visit that the command string names, or ends the program. Returns when the first screen is
/// up and filled.
void Main();
