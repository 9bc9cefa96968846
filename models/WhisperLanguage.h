#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vocalith {

/// The spoken languages that whisper models know. A case is named by the code that the library and the settings use;
/// `automatic`, with the code "auto", lets the model find out.
enum class WhisperLanguage : std::uint8_t {
    // clang-format off
    automatic, af, am, ar, as, az, ba, be, bg, bn, bo, br, bs, ca, cs, cy, da, de, el, en, es, et, eu, fa, fi,
    fo, fr, gl, gu, ha, haw, he, hi, hr, ht, hu, hy, id, is, it, ja, jw, ka, kk, km, kn, ko, la, lb, ln, lo, lt,
    lv, mg, mi, mk, ml, mn, mr, ms, mt, my, ne, nl, nn, no, oc, pa, pl, ps, pt, ro, ru, sa, sd, si, sk, sl, sn,
    so, sq, sr, su, sv, sw, ta, te, tg, th, tk, tl, tr, tt, uk, ur, uz, vi, yi, yo, yue, zh
    // clang-format on
};

/// "auto", then the languages in the order of their codes.
std::vector<WhisperLanguage> allWhisperLanguages();

/// The library's code, e.g. "de".
std::string_view rawValue(WhisperLanguage language);
/// The English name, e.g. "German".
std::string_view displayName(WhisperLanguage language);

/// Reads a code or an English name in any case. Nothing for a language that the models do not know.
std::optional<WhisperLanguage> parseWhisperLanguage(std::string_view text);

} // namespace vocalith
