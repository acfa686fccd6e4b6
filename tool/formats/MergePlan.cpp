#include "tool/formats/MergePlan.h"

#include "tool/formats/AlignmentFields.h"
#include "tool/formats/AlignmentUid.h"

namespace {

QByteArray Content(const Alignment& alignment, const QString& uid) {
  return uid.toLatin1() + TextBesideUid(alignment);
}

}  // namespace

MergePlan::MergePlan(const std::vector<Reports>& there) {
  for (const Reports& reports : there) {
    for (const Alignment& alignment : reports.alignments) Keep(alignment, AlignmentUid(alignment));
  }
}

void MergePlan::Keep(const Alignment& alignment, const QString& uid) {
  const std::size_t number = kept_.size();
  kept_.push_back(alignment);
  if (!byUid_.contains(uid)) byUid_.insert(uid, number);
  byMatch_.try_emplace(MatchKeyOf(alignment), number);
  contents_.insert(Content(alignment, uid));
}

MergePlan::Step MergePlan::Take(const Alignment& alignment) {
  const QString uid = AlignmentUid(alignment);
  const auto sameUid = byUid_.constFind(uid);
  Step step{sameUid == byUid_.constEnd(), {}};
  if (step.isAdded) {
    const auto matching = byMatch_.find(MatchKeyOf(alignment));
    if (matching != byMatch_.end()) step.conflict = DifferingFields(kept_.at(matching->second), alignment);
    Keep(alignment, uid);
  } else if (!contents_.contains(Content(alignment, uid))) {
    step.conflict = DifferingFields(kept_.at(*sameUid), alignment);
  }
  ++(step.isAdded ? added_ : there_);
  conflicts_ += step.conflict.isEmpty() ? 0 : 1;
  return step;
}
