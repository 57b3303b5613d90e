// Time scales: the length of a dump's tick in nanoseconds.
#ifndef KESNCD_LINE_READERS_TIMESCALE_H_
#define KESNCD_LINE_READERS_TIMESCALE_H_

namespace orsa::kesncd {

/// How unit texts are compared. The line readers take "ns" only; the grammar reader takes "NS" too.
enum class UnitCase { Exact, Ignored };

/// Nanoseconds in one `unit` ("s" to "fs"); 0.0 for any other text.
double NanosecondsPer(const char* unit, UnitCase unitCase);

/// Converts the words of a time-scale line ("10ps", or "10" and "ps") into `timeScale`, which it
/// also returns; -1.0 when they are not understood.
double ReadTimescale(char** tokens, int count);

}  // namespace orsa::kesncd

#endif  // KESNCD_LINE_READERS_TIMESCALE_H_
