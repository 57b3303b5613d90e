/// @file
/// libkesncd: switching activity of a logic simulation.
///
/// The library reads a value change dump (VCD, the text format of IEEE 1364), counts the value
/// changes of every signal inside the dumped time span, and turns the counts into toggle
/// frequencies in MHz for a power estimator.
///
/// A host creates one analyser and drives it in this order:
///
///     orsa::kesncd::KesNCD analyser;
///     analyser.SetTopModule("soc");
///     analyser.SetTWRFileOn(true);              // optional: clock frequencies of a timing report
///     analyser.SetTWRFile("soc.twr", 0);
///     std::string message;
///     if (!analyser.SetVCDFile("soc.vcd", {"clk", "rst_n"}, message)) { ... message ... }
///     // analyser.signalFreqs now maps "clk", "data_0", "data_1", ... to MHz.
///     if (!analyser.SetVCDFileHier("soc.vcd", {}, message)) { ... }
///     // analyser.hierRoot is the module tree; CreateKesSigFreq and ExtractNCD hand over.
///
/// What counts as a change: a scalar that becomes 0 or 1 and every vector or real value, also one
/// that repeats the value before, while dumping is on. Changes to x and z do not count. The values
/// listed under "$dumpvars" count, so a signal's first change is its initial value, and a signal
/// with c changes has made (c - 1) / 2 cycles.
///
/// What outlives a run: the reader state below is process-wide. Only loading the library gives it
/// its first values; the time span, the recording switch and the "matched" flag carry over from one
/// run into the next, also across analysers. A process that wants figures untouched by an earlier
/// run loads the library afresh.
///
/// Threads: none. One operation at a time in a process. Locale: numbers are read and written with
/// a decimal point whatever locale the host has set; the host's locale is left as it is.
///
/// Errors: an operation reports through its result and, where it has one, its message argument.
/// Nothing is thrown on purpose; std::bad_alloc and the exceptions of the host's own classes pass
/// through.
///
/// The header is clean C++14 and includes standard headers only.
#ifndef KESNCD_KESNCD_H_
#define KESNCD_KESNCD_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

/// Part of the interface, whatever visibility the host is compiled with.
#define KESNCD_API __attribute__((visibility("default")))
/// A part of an exported class that only the library calls.
#define KESNCD_LOCAL __attribute__((visibility("hidden")))

// The host's classes; their operations are the host's (see host/design_data.h, host/power_data.h).
class CommonData;
class NC_DESIGN;
class PD_DATA;

namespace orsa {
/// All that the library offers.
namespace kesncd {

class VmodHier;
// Of the library's inside.
class CodeCounts;
class Splitter;

// ---------------------------------------------------------------------------------------------
// Line splitting

/// Splits lines into arrays of C strings that it owns and uses again for the next line.
///
/// The returned array is `slots`: valid until the next call on the same object, never freed by the
/// caller. Growth throws std::bad_alloc when memory runs out; the object stays usable.
///
/// The public fields describe the splitter as its callers have always seen it and may disagree
/// with the memory really held (see GetArrayOfPieces); reading a slot below the count that a call
/// returned is always safe. Callers do not write the fields.
class KESNCD_API Mem {
 public:
  /// 32 empty slots for strings of up to 256 characters.
  Mem();
  ~Mem();
  Mem(const Mem&) = delete;
  Mem& operator=(const Mem&) = delete;

  /// Cuts `line` into the words between characters of `delims` and stores their number in
  /// `*count`. Runs of delimiters count as one; a newline that ends a word is dropped. Slots at and
  /// beyond `*count` keep what they held. A line longer than `slotLength` raises it to the line's
  /// length; reaching `slotCount` words doubles that.
  char** GetArrayOfTokens(const char* line, const char* delims, int* count);

  /// Cuts `text` into maximal runs of decimal digits, of ASCII letters and of anything else:
  /// "bus[3]" gives "bus", "[", "3", "]". `*count` receives their number.
  ///
  /// Three habits that callers rely on: no terminator is written, so a slot keeps the tail of a
  /// longer string it held ("abcdef", then "xy", reads "xycdef"); more pieces than `slotCount`
  /// empty all slots and double the count, but once only; a piece longer than `slotLength` stores
  /// twice its length in `slotCount` and leaves `slotLength` alone.
  char** GetArrayOfPieces(const char* text, int* count);

  int slotCount;     ///< number of slots, as reported
  int slotLength;    ///< longest line seen, at least 256
  char** slots;      ///< the strings of the last call
  char* workBuffer;  ///< copy of the line last cut into tokens

 private:
  Splitter* splitter_;  // owned; the fields above are its own
};

// ---------------------------------------------------------------------------------------------
// Activity of one module

/// The signals declared in one module, in declaration order, with their change counts.
///
/// Signals are addressed by index, from 0 to GetSignalSize() - 1. An index outside reads as an
/// empty string or 0 and removes nothing. Duplicates are kept.
class KESNCD_API Vmod {
 public:
  /// No name, no signals.
  Vmod();
  explicit Vmod(const std::string& name);  ///< a name, no signals
  Vmod(const Vmod&) = default;             ///< copies signals and counts
  Vmod& operator=(const Vmod&) = default;  ///< the same
  ~Vmod();

  void SetName(const std::string& name);  ///< names the module
  std::string GetName() const;            ///< the module's name

  /// Appends a signal: its name, VCD variable type, identifier code and width in bits. It starts
  /// with no changes.
  void AddSignal(const std::string& name, const std::string& type, const std::string& symbol,
                 int nbit);

  int GetSignalSize() const;                    ///< number of signals
  std::string GetSignalName(int index) const;   ///< name as declared, a range glued on
  std::string GetSignalType(int index) const;   ///< VCD variable type: "wire", "reg", ...
  std::string GetSignalSymb(int index) const;   ///< VCD identifier code
  std::string GetSignalState(int index) const;  ///< always empty
  int GetSignalNbit(int index) const;           ///< declared width in bits
  int GetSignalChange(int index) const;         ///< counted value changes

  /// Adds one change to the first signal with this identifier code; others that share the code do
  /// not count. Unknown codes do nothing. Constant time. A count stops at 2147483647.
  void IncreaseChangeForSymbol(const std::string& symbol);

  /// The toggle frequency of a signal in MHz over the span from startCycle to endCycle at
  /// timeScale nanoseconds a tick. 0.0 without a second change or without a span; negative when the
  /// span is.
  double GetSignalFreq(int index) const;

  /// Removes the signal at `index`.
  void RemoveSignal(int index);
  /// Removes the first signal of this name, but leaves its width behind: the widths of the signals
  /// after it are shifted by one from then on.
  void RemoveSignal(const std::string& name);
  /// Removes the first signal of this name and type.
  void RemoveSignal(const std::string& name, const std::string& type);
  /// Removes all signals and the name.
  void Clear();

  /// Prints all that is known of the module to standard output, a line a signal.
  void PrintMod() const;
  /// Prints names and frequencies to standard output.
  void PrintModSimple() const;
  /// Appends "module | NAME" and a line "signal | NAME | MHZ" (six decimals) for each signal to the
  /// file at `path`. Nothing happens when the file cannot be opened.
  void DumpIntoFile(const std::string& path) const;

  /// @cond library_only
  // For the library's readers: gives each code a counter, and takes its changes for the first
  // signal that has it.
  KESNCD_LOCAL void AddCodesTo(CodeCounts& counts) const;
  KESNCD_LOCAL void TakeChangesOf(CodeCounts& counts);
  /// @endcond

 private:
  KESNCD_LOCAL std::size_t& SlotOf(const std::string& symbol);
  KESNCD_LOCAL void IndexSymbols();
  KESNCD_LOCAL void Remove(std::size_t index, bool widthToo);

  std::string name_;
  std::vector<std::string> names_;
  std::vector<std::string> types_;
  std::vector<std::string> symbols_;
  std::vector<int> nbits_;
  std::vector<int> changes_;
  std::vector<std::string> states_;

  std::vector<std::size_t> firstOfSymbol_;  // by hash: one more than its index, 0 for none
  std::size_t indexed_;                     // signals that firstOfSymbol_ covers
};

/// A signal record by itself: a name, with a type and a frequency that stay at their first values.
class KESNCD_API Vsig {
 public:
  /// An empty name.
  Vsig();
  explicit Vsig(const std::string& name);  ///< a record of this name

  void SetSig(const std::string& name);  ///< sets the name
  /// Sets the name only; type and frequency are ignored.
  void SetSig(const std::string& name, const std::string& type, double freq);
  std::string GetSigName() const;  ///< the name
  std::string GetSigType() const;  ///< always empty
  double GetSigFreq() const;       ///< always -1.0
  /// Prints the record to standard output.
  void PrintSig() const;

 private:
  std::string name_;
  std::string type_;
  double freq_;
};

// ---------------------------------------------------------------------------------------------
// Activity of a module tree

/// One signal of a scope.
struct VmodSignal {
  std::string name;    ///< as declared; a range is glued on: "data[7:0]"
  std::string type;    ///< VCD variable type: "wire", "reg", ...
  std::string symbol;  ///< VCD identifier code
  int width = 0;       ///< declared width in bits
  int changes = 0;     ///< counted value changes, 2147483647 at most
  std::string state;   ///< unused, empty
};

/// One scope of the module tree: its signals and its child scopes.
///
/// A node owns its children. Walking and destroying a tree needs no stack in proportion to its
/// depth. A node is not copied.
class KESNCD_API VmodHier {
 public:
  /// A node without name, signals, children and parent.
  VmodHier();
  explicit VmodHier(std::string name);  ///< the same with a name
  VmodHier(const VmodHier&) = delete;
  VmodHier& operator=(const VmodHier&) = delete;
  ~VmodHier();

  /// Empties the node and deletes its children; `parent` stays.
  void Clear();
  /// Appends a child and takes ownership of it. The child's `parent` is not set. A node is added
  /// once, to one parent only.
  void AddSubMod(VmodHier* child);
  /// Declares a signal. The first declaration of an identifier code and the first code of a name
  /// stay; a repeated name with a new code adds a signal that `names` does not list.
  void AddSignal(std::string name, std::string type, std::string symbol, int width);
  /// Adds one change to the first node of this subtree (the node, then its children in order) that
  /// declares the code. False when none does.
  bool IncreaseChangeForSymbol(const std::string& symbol);

  /// Returns `name` unchanged.
  std::string GetNameHier(const std::string& name) const;
  /// Returns `name` with every "/" turned into "_".
  static std::string GetNameFlat(const std::string& name);

  /// Adds the name and frequency in MHz of every signal of this subtree to `frequencies`; a name
  /// that is there keeps its value.
  void GetSignalFreqHier(std::map<std::string, double>& frequencies) const;

  /// Whether a name of the dump and a name of the design mean the same object. The dump's name may
  /// carry a bit index or a range, the design's may use "/" between scopes and "_" around an index:
  ///
  ///   cnt[3]     matches cnt[3] and cnt_3_       u1_q   matches u1/q
  ///   data[7:0]  matches data[5] and data_5_     rstI   matches rst
  ///
  /// A range never matches as a whole, and "exact" false ignores letter case throughout.
  static bool IsNameEqual(const std::string& vcdName, const std::string& designName, bool exact);

  /// Finds a signal by its design name and stores its frequency in MHz; false, with `freq`
  /// untouched, when there is none. The node's own signals are searched only when its name equals
  /// `module`; below it every scope takes part whatever its name, in declaration order, depth
  /// first.
  bool FindSignalFreqHier(std::string module, std::string signal, double& freq, bool exact) const;

  std::string name;                           ///< scope name as the dump writes it
  std::map<std::string, VmodSignal> signals;  ///< by identifier code
  std::map<std::string, std::string> names;   ///< signal name to identifier code
  std::vector<VmodHier*> subMods;             ///< child scopes in declaration order, owned
  VmodHier* parent;                           ///< enclosing scope, null for the root

  /// @cond library_only
  // For the library: the list of an analyser's nodes that hang nowhere. A node leaves it when it is
  // added to another node or deleted.
  KESNCD_LOCAL void LinkTo(VmodHier*& list);
  KESNCD_LOCAL void Unlink();
  KESNCD_LOCAL void UnlinkBelow();
  KESNCD_LOCAL static void DeleteList(VmodHier*& list);
  /// @endcond

 private:
  VmodHier* nextUnlinked_ = nullptr;
  VmodHier** linkToThis_ = nullptr;  // null outside a list
};

// ---------------------------------------------------------------------------------------------
// Records for the host's power tables. A frequency is in MHz, -1.0 while unknown.

/// An output port of a component.
struct KesPort {
  std::string netName;   ///< net on the port
  std::string portName;  ///< the component's name for the port
  double freq = -1.0;    ///< of the net, else of the port in the component
};

/// A component that hangs on a signal.
struct KesComp {
  std::string name;               ///< component in the design
  std::string type;               ///< kind of component
  std::vector<KesPort> outPorts;  ///< its output ports, in the table's order
  double freq = -1.0;             ///< of the signal of its name; unknown for slices among inputs
};

/// A signal with the components that it feeds from (`inputs`) and drives (`outputs`).
struct KesSigFreq {
  std::string name;              ///< signal in the design
  std::vector<KesComp> inputs;   ///< rows "INPUT"
  std::vector<KesComp> outputs;  ///< rows "OUTPUT"
  double freq = -1.0;            ///< the tree's, or the mean of the inputs
};

// ---------------------------------------------------------------------------------------------
// The analyser

/// Reads dumps and timing reports and hands their frequencies to the host. The host writes
/// `extractName`, `ncdFile`, `prfFile` and `extractOption` itself and may read every member.
class KESNCD_API KesNCD {
 public:
  /// Everything empty. Forgets the top module that an earlier analyser was given.
  KesNCD();
  /// Deletes the module tree. The top module's name stays readable.
  ~KesNCD();
  KesNCD(const KesNCD&) = delete;
  KesNCD& operator=(const KesNCD&) = delete;

  /// Sets the process-wide name of the top module, compared byte for byte with the dump's scopes.
  void SetTopModule(const std::string& name);
  /// Whether ExtractNCD hands over the timing report's clock frequencies too.
  void SetTWRFileOn(bool on);
  /// Names the timing report and reads it at once with ReadTWR2(mode). An empty path does nothing.
  void SetTWRFile(const std::string& path, int mode);

  /// Names the dump and runs ReadVCD on it.
  bool SetVCDFile(const std::string& path, const std::set<std::string>& signals,
                  std::string& message);
  /// Names the dump and runs ReadVCDHier on it.
  bool SetVCDFileHier(std::string path, const std::set<std::string>& signals, std::string& message);

  /// The flat run: reads the dump's top module into `topMod` and fills `signalFreqs` (MHz by
  /// design-style name: "data[3]" becomes "data_3", "data[7:0]" becomes "data_0" to "data_7"), then
  /// writes the activity to the dump's path with ".txt" after it (not reported when that fails).
  /// `signals` selects variables by name, also with "/" for "_"; a name with a bit index or a range
  /// is always taken. False with `message` set, and `signalFreqs` as it was, when the path is empty
  /// or cannot be opened or read to its end, the top module has never been met, or the ranges of
  /// the top module stand for more than 16777216 bits. `message` is written on failure only.
  bool ReadVCD(const std::set<std::string>& signals, std::string& message);
  /// The hierarchical run: builds `hierRoot` and `codeIndex` with the changes of every signal.
  /// `signals` has no effect. False with `message` set when the path is empty or cannot be opened
  /// (the old tree stays), no scope has ever been met, or the dump cannot be read to its end.
  bool ReadVCDHier(const std::set<std::string>& signals, std::string& message);

  /// Reads an open dump into `topMod`, which the caller has emptied: every variable of the top
  /// module, lines of up to 1023 characters. False when the time scale is not understood, the top
  /// module's scope ends without a variable, the definitions end without the top module, or a read
  /// error ends the stream. The stream stays the caller's, right after the last line handled if it
  /// can seek (the values after the definitions are read in blocks).
  bool ParseVcdFile(std::FILE* file);
  /// The same for the selected variables (see ReadVCD), lines of up to 4095 characters. Always 0.
  int ParseVcdFile2(std::FILE* file, const std::set<std::string>& signals);
  /// Reads an open dump into the module tree. False when the time scale is not understood or a
  /// read error ends the stream.
  /// `signals` has no effect.
  bool ParseVcdFileHier(std::FILE* file, const std::set<std::string>& signals);
  /// Adds one change to the code in every scope that declared it.
  void IncreaseChangeForSymbol(const std::string& symbol);

  /// Proposes a top module: the innermost module of the first unbroken run of nested scopes in the
  /// dump's header; empty when there is none. False with `message` set when the file cannot be
  /// opened.
  bool GetTopModuleNameInVCD(std::string path, std::string& topModule, std::string& message);
  /// Converts the words of a time scale ("10ps", or "10" and "ps") into nanoseconds a tick and
  /// stores that in timeScale. -1.0 when it is not understood.
  double GetTimeInVCD(char** tokens, int count);

  /// Reads the timing report's clock frequencies into `clockFreqs`, in MHz by net or port. `mode`
  /// picks the lower of constraint and achieved (0), the constraint (1) or the achieved value (2).
  /// True when an entry was kept; else `clockFreqs` stays as it was, also where the report cannot
  /// be read to its end.
  bool ReadTWR2(int mode);
  /// The earlier reader of the same report, which closes a row at its ";".
  bool ReadTWR(int mode);

  /// The host's current design, or null when none is loaded and up to date.
  NC_DESIGN* isNcdAvailable(CommonData* registry);
  /// Runs the host's extraction with the flat run's frequencies, and with the clock frequencies
  /// for names that the run did not give when the timing report is on. Loads the design from
  /// `ncdFile` and `prfFile` unless both are empty and a current one exists. Returns the
  /// extraction's result, 0 when no design could be loaded. Writes `ncdName`.
  std::intptr_t ExtractNCD();
  /// Records for the rows of the document's table "Hierarchical Connections", with the frequencies
  /// that the module tree knows. A signal that it does not know takes the mean of its inputs,
  /// `defaultFreq` standing for unknown ones. Empty without such a table. `exact` as in
  /// VmodHier::IsNameEqual.
  std::vector<KesSigFreq> CreateKesSigFreq(PD_DATA* data, double defaultFreq, bool exact);

  std::string twrFile;                                      ///< timing report
  std::string vcdFile;                                      ///< dump
  std::string extractName;                                  ///< scope passed to the extraction
  std::string ncdFile;                                      ///< first source of the design
  std::string prfFile;                                      ///< second source of the design
  std::map<std::string, double> signalFreqs;                ///< flat run: name to MHz
  std::map<std::string, double> clockFreqs;                 ///< timing report: name to MHz
  bool twrFileOn;                                           ///< hand clockFreqs over too
  std::map<std::string, std::vector<VmodHier*>> codeIndex;  ///< code to declaring scopes, not owned
  VmodHier* hierRoot;                                       ///< module tree, owned; may be null
  std::string extractOption;                                ///< passed to the extraction
  std::string ncdName;                                      ///< name of the design extracted

 private:
  KESNCD_LOCAL void DeleteHierarchy();

  VmodHier* unlinkedScopes_;  // list of the top-level scopes after the root; owned
};

// ---------------------------------------------------------------------------------------------
// Reader state, process-wide. The values are those at load.

KESNCD_API extern Vmod topMod;                  ///< empty; the flat readers fill it
KESNCD_API extern char* topModName;             ///< null; set by SetTopModule, do not free
KESNCD_API extern int isTopModNameEverMatched;  ///< 0; 1 once a reader has met its scope
KESNCD_API extern int isReadingTopMod;          ///< 0; grammar reader: inside the top module
KESNCD_API extern double timeScale;             ///< 0.0; nanoseconds a tick
KESNCD_API extern int debug;                    ///< 0; set by the host: print traces
KESNCD_API extern int recording;                ///< 1; whether changes count now
KESNCD_API extern double startCycle;  ///< -1.0; first time stamp in ticks, if not negative
KESNCD_API extern double endCycle;    ///< -1.0; latest time stamp in ticks
KESNCD_API extern int onlyOnce;       ///< 1; cleared by the first conversion under debug
KESNCD_API extern int currentLevel;   ///< -1; unused
KESNCD_API extern double cur_time;    ///< 0.0; grammar reader: latest time stamp
KESNCD_API extern int isReal;         ///< 0; grammar reader: a real value was read
KESNCD_API extern int isBinary;       ///< 0; grammar reader: a vector value was read
KESNCD_API extern char vcdstr[1024];  ///< zero; grammar reader: the current value

// ---------------------------------------------------------------------------------------------
// Grammar-driven reader: a second, token-based way to read a dump into topMod.

/// The value of a token: the text of a word, terminated.
struct YYSTYPE {
  char text[1024];  ///< 1023 characters at most
};

KESNCD_API extern std::FILE* yyin;      ///< null; the input
KESNCD_API extern char yytext[1024];    ///< zero; the last word read
KESNCD_API extern char yysbuf[1024];    ///< zero; characters read ahead
KESNCD_API extern char* yysptr;         ///< start of yysbuf; one past the last of them
KESNCD_API extern int yytchar;          ///< 0; the last character read
KESNCD_API extern int yylineno;         ///< 1; number of the input line, never reset
KESNCD_API extern int yy_yys[150];      ///< state stack
KESNCD_API extern YYSTYPE yy_yyv[150];  ///< value stack
KESNCD_API extern int* yys;             ///< yy_yys; the state stack in use
KESNCD_API extern YYSTYPE* yyv;         ///< yy_yyv; the value stack in use
KESNCD_API extern int* yyps;            ///< top of the state stack
KESNCD_API extern YYSTYPE* yypv;        ///< top of the value stack
KESNCD_API extern int yystate;          ///< current state
KESNCD_API extern int yychar;           ///< look-ahead token, -1 when none
KESNCD_API extern int yyerrflag;        ///< above 0 while recovering from an error
KESNCD_API extern int yynerrs;          ///< syntax errors of the parse
KESNCD_API extern int yytmp;            ///< scratch
KESNCD_API extern YYSTYPE yyval;        ///< value of the rule being reduced
KESNCD_API extern YYSTYPE yylval;       ///< value of the last word
KESNCD_API extern int yydebug;          ///< 0; unused

/// Reads an open dump into topMod by the grammar. 0 when it was accepted, 2 when the parse was
/// given up (reported on standard error). A time scale that is not understood ends the process with
/// status 4. The stream stays the caller's; neither topMod nor any other state is reset.
KESNCD_API int ParseVcdFile(std::FILE* stream);
/// Parses yyin: 0 accepted, 1 given up.
KESNCD_API int yyparse();
/// Reads the next token from yyin: 0 at the end, 257 for a word (its text in yylval), 260 to 269
/// for a keyword.
KESNCD_API int yylex();
/// Prints a parse error with the last word and line to standard error; the print's result.
KESNCD_API int yyerror(const char* message);

/// Cuts `text` into runs of digits and of letters; other characters are dropped and do not end a
/// run ("1.5ns" gives "15", "ns"). `*count` receives their number. The caller frees each string and
/// the array with free().
KESNCD_API char** GetArrayOfNumbersAndLetters(const char* text, int* count);
/// Cuts `text` into the words between characters of `delims`. Ownership as above.
KESNCD_API char** GetArrayOfTokens(const char* text, const char* delims, int* count);

}  // namespace kesncd
}  // namespace orsa

#endif  // KESNCD_KESNCD_H_
