/// How the window's area is divided: shares that the user moves by the splitters, remembered
/// between sessions.
#pragma once

namespace window {

/// A rectangle in pixels.
struct AreaBox {
    float left = 0.0f, top = 0.0f, width = 0.0f, height = 0.0f;
};

struct AreaShares {
    float right = 0.36f;   ///< of the window's width: texture, results, attributes
    float console = 0.18f; ///< of the height: the console below the model panels
    float texture = 0.52f; ///< of the right side's height
    float results = 0.21f; ///< of the right side's height

    /// Clamps every share so that no area vanishes.
    void limit();
};

/// The preferences of the last session, else the defaults.
AreaShares remembered_shares();
void remember_shares(const AreaShares& shares);

} // namespace window
