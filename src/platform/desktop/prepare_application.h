#pragma once

/// Fonts, language, look and wheel of the application; called once, before the first window. The Windows fonts that the
/// screens name lead to free Korean ones.
void PrepareApplication();
