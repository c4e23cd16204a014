// Runs the tool as a person does: one program for each measurement. The figure is the processor
// time from its start to its end.
//
// QV_BENCH_BEFORE may name the tool of an earlier version, which then runs in turn with this one.
#pragma once

#include <string>
#include <vector>

namespace bench {

using Words = std::vector<std::string>;

// The folder of this program.
std::string Folder();
// The tool that was built with this program.
std::string ToolNow();
// The tool of an earlier version; empty when there is none.
std::string ToolBefore();

// A program with a machine of its own, in the format of its version.
class Tool {
  public:
    // The machine is made from a `.reg` file; an empty name leaves it empty.
    Tool(std::string program, const std::string& root, const std::string& machine);

    // Processor time of one run, negative when it failed.
    double Seconds(const Words& words) const;

  private:
    std::string program_;
    std::string root_;
};

// Registers the case NAME that runs what `words` gives for each run.
void AddToolCase(const std::string& name, const Tool& (*tool)(), Words (*words)());

}  // namespace bench
