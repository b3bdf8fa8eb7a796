#pragma once

/// Fonts, language, look, wheel and memory of the application; called once, before the first window. The Windows fonts
/// that the screens name lead to free Korean ones.
void PrepareApplication();
