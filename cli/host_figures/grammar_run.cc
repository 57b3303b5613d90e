// The grammar reader in a child process, since a bad time scale ends the process it runs in.
#include "cli/host_figures/grammar_run.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>

#include "cli/process/messages.h"
#include "kesncd/kesncd.h"

namespace orsa::kesncd::cli {

namespace {

// The status with which the reader ends its process (see ParseVcdFile); none of the program's own.
constexpr int kBadTimeScale = 4;

struct Closer {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};

/// Turns away what the reader prints, as long as the object lives.
class SilentOutput {
 public:
  // All three calls may fail in a process that is out of descriptors; the words then show, which is
  // no more than untidy.
  SilentOutput() : kept_(dup(STDOUT_FILENO)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
  }
  ~SilentOutput() {
    dup2(kept_, STDOUT_FILENO);
    close(kept_);
  }
  SilentOutput(const SilentOutput&) = delete;
  SilentOutput& operator=(const SilentOutput&) = delete;

 private:
  int kept_;
};

/// Reads the dump into topMod. Throws Failure with Unusable for what the grammar does not accept.
void Parse(DumpInput& input, const std::string& top) {
  orsa::kesncd::KesNCD analyser;
  // The reader knows the module by name when it meets it, so this comes first.
  analyser.SetTopModule(top);
  const SilentOutput silent;
  const bool isAccepted = input.Read([](const std::string& path) {
    // The stream stays the caller's: the library does not close it.
    const std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "r"));
    return orsa::kesncd::ParseVcdFile(file.get()) == 0;
  });
  if (!isAccepted) {
    throw Failure(FailureKind::Unusable, input.name() + ": the grammar reader does not accept it");
  }
}

/// All of the child's work, with the exceptions turned into a message and a status: nothing may
/// leave the child by another way than _exit, which would run the parent's destructors twice.
int RunChild(DumpInput& input, const std::string& top, const std::function<ExitStatus()>& print) {
  try {
    Parse(input, top);
    return static_cast<int>(print());
  } catch (const Failure& failure) {
    if (failure.kind() != FailureKind::ReaderGone) Say("", failure.what());
    return static_cast<int>(StatusOf(failure));
  } catch (const std::exception& error) {
    Say("", error.what());
    return static_cast<int>(ExitStatus::Unusable);
  }
}

}  // namespace

ExitStatus RunGrammarReader(DumpInput& input, const std::string& top,
                            const std::function<ExitStatus()>& print) {
  // No thread of this program runs yet, so the child may use everything.
  const pid_t child = fork();
  if (child < 0) throw Failure(FailureKind::Unusable, "cannot start the grammar reader");
  if (child == 0) {
    // Who ends the program ends the reader too, before it leaves a result.
    (void)prctl(PR_SET_PDEATHSIG, SIGTERM);
    // Without exit handlers and buffers of the parent, which the child has copies of.
    _exit(RunChild(input, top, print));
  }
  int status = 0;
  // A signal that does not end the program may interrupt the wait.
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  // Ended by a signal, such as the one that the system sends when memory runs out.
  if (!WIFEXITED(status))
    throw Failure(FailureKind::Unusable, input.name() + ": the reading was ended");
  if (WEXITSTATUS(status) == kBadTimeScale) {
    throw Failure(FailureKind::Unusable, input.name() + ": its time scale is not understood");
  }
  return static_cast<ExitStatus>(WEXITSTATUS(status));
}

}  // namespace orsa::kesncd::cli
