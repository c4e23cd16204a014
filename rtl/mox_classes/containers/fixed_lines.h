// Line numbers of log lines that stay as they are, whatever the source looks like: those who read
// logs of many versions filter by "[mox_classes,608]" and its kin.
#pragma once

namespace Classes {

inline constexpr int kLineOfRangeError = 483;    // TStringList: an index outside the list
inline constexpr int kLineOfCopyTrace = 608;     // TStream::CopyFrom: a piece is written
inline constexpr int kLineOfRequestTrace = 728;  // TMemoryStream: the capacity that is asked for
inline constexpr int kLineOfRoundedTrace = 732;  // TMemoryStream: the capacity that is taken

}  // namespace Classes
