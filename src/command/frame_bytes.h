#pragma once

namespace tavira {

/** Open and close one answer in what the printer sends; bytes outside are noise. */
inline constexpr char kStx = '\x02';
inline constexpr char kEtx = '\x03';

}  // namespace tavira
