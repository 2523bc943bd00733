// The subcommand `orva vote`.
#ifndef ORVA_APPS_VOTE_COMMAND_H
#define ORVA_APPS_VOTE_COMMAND_H

#include <optional>
#include <string>
#include <vector>

#include "apps/subcommand.h"
#include "formats/centers_table.h"
#include "formats/vote.h"

namespace orva::apps {

class VoteCommand : public Subcommand {
 public:
  // Adds the subcommand and its options to `line`.
  explicit VoteCommand(CommandLine& line);

  int run() const override;

 private:
  void addVotingOptions();
  void addFileOptions();
  void check() const;
  bool isPrinted() const;
  void voteOnOne() const;
  int voteOnAll() const;
  // Writes the results of one image of several and returns its row of the summary.
  std::string voteInBatch(const std::string& file) const;
  std::string table(const std::string& file, const orva::Image& img,
                    const VoteResult& result) const;
  const char* extension() const { return format_ == TableFormat::kCsv ? ".csv" : ".json"; }

  std::vector<std::string> images_;
  VoteSettings settings_;
  std::optional<std::string> history_;
  int frame_ = 0;
  std::optional<std::string> centersFile_;
  TableFormat format_ = TableFormat::kCsv;
  std::optional<std::string> overlayFile_;
  std::optional<std::string> outDirectory_;
  bool quiet_ = false;
};

}  // namespace orva::apps

#endif
