#pragma once

/// Makes `MovieEncoder` stand ready.
void RegisterMovies();
