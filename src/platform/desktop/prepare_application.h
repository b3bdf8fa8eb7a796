#pragma once

/// Fonts, language and look of the application; called once, before the first window. The Windows fonts that the
/// screens name lead to free Korean ones.
void PrepareApplication();
