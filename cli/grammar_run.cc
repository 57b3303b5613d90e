#include "cli/grammar_run.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <memory>

#include "kesncd/kesncd.h"

namespace kesncd_cli {

namespace {

// The status with which the reader ends its process; none of the program's own.
constexpr int kBadTimeScale = 4;

struct Closer {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};

/// Sends standard output nowhere for its lifetime: the reader writes its last words there.
class SilentOutput {
 public:
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

void Parse(const std::string& dump, const std::string& top) {
  const std::unique_ptr<std::FILE, Closer> file(std::fopen(dump.c_str(), "r"));
  if (file == nullptr) throw Failure(ExitStatus::Unusable, dump + ": cannot be read");
  orsa::kesncd::KesNCD analyser;
  analyser.SetTopModule(top);
  const SilentOutput silent;
  if (orsa::kesncd::ParseVcdFile(file.get()) != 0) {
    throw Failure(ExitStatus::Unusable, dump + ": the grammar reader does not accept it");
  }
}

int RunChild(const std::string& dump, const std::string& top,
             const std::function<ExitStatus()>& print) {
  try {
    Parse(dump, top);
    return static_cast<int>(print());
  } catch (const Failure& failure) {
    Say("", failure.what());
    return static_cast<int>(failure.status());
  } catch (const std::exception& error) {
    Say("", error.what());
    return static_cast<int>(ExitStatus::Unusable);
  }
}

}  // namespace

ExitStatus RunGrammarReader(const std::string& dump, const std::string& top,
                            const std::function<ExitStatus()>& print) {
  const pid_t child = fork();
  if (child < 0) throw Failure(ExitStatus::Unusable, "cannot start the grammar reader");
  if (child == 0) _exit(RunChild(dump, top, print));
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(status)) throw Failure(ExitStatus::Unusable, dump + ": the reading was ended");
  if (WEXITSTATUS(status) == kBadTimeScale) {
    throw Failure(ExitStatus::Unusable, dump + ": its time scale is not understood");
  }
  return static_cast<ExitStatus>(WEXITSTATUS(status));
}

}  // namespace kesncd_cli
