#include "bench/Operations.h"

#include <algorithm>
#include <iterator>

namespace {

const std::vector<const char*> everybody{Contenders::library, Contenders::guarded,
                                         Contenders::floor,   Contenders::floorWithValues,
                                         Contenders::qtSql,   Contenders::sqliteCpp};
// Conversions build no Qt values.
const std::vector<const char*> converters{Contenders::library, Contenders::guarded,
                                          Contenders::floor,   Contenders::floorByHash,
                                          Contenders::qtSql,   Contenders::sqliteCpp};

Content Alignments(int firstSite, int others, int perSite = 100) {
  Content content;
  content.firstSite = firstSite;
  content.others = others;
  content.perSite = perSite;
  return content;
}

/// Half of the alignments are of sites. One in a hundred rows is an orphan, if any are.
Content OldFile(int version, int alignments, bool orphans) {
  Content content = Alignments(0, alignments / 2, 10);
  content.version = version;
  content.paths = alignments - alignments / 2;
  content.orphans = orphans ? alignments / 100 : 0;
  return content;
}

void AddCreation(std::vector<Operation>* all) {
  Content none;
  none.version = 0;
  all->push_back({"create", -1, none, 1, [](Contender& c, int) { return c.Create(); }, everybody});
}

void AddSaves(std::vector<Operation>* all) {
  for (const int rows : {0, 1000, 100000}) {
    all->push_back({"save site alignment", rows, Alignments(0, rows), 50,
                    [](Contender& c, int) { return c.SaveSiteAlignment(); }, everybody});
    all->push_back({"save path alignment", rows, Alignments(0, rows), 50,
                    [](Contender& c, int) { return c.SavePathAlignment(); }, everybody});
  }
}

void AddReads(std::vector<Operation>* all) {
  for (const int others : {1, 10}) {
    const std::string name = others == 1 ? "read reports, as many others" : "read reports, ten times as many";
    for (const int records : {1, 100, 10000}) {
      const auto read = [records](Contender& c, int) { return c.ReadReports(1) == records; };
      const int runs = records <= 100 ? 50 : 2;
      all->push_back({name, records, Alignments(records, records * others), runs, read, everybody});
    }
  }
  for (const int sites : {10, 1000}) {
    all->push_back({"list identifiers", sites, Alignments(1, sites - 1, 1), 50,
                    [sites](Contender& c, int) { return c.ListSites() == sites; }, everybody});
  }
}

void AddDeletions(std::vector<Operation>* all) {
  constexpr int sites = 20;
  const Content content = Alignments(100, 100 * (sites - 1));
  all->push_back({"delete site of 100 reports", -1, content, sites,
                  [](Contender& c, int nth) { return c.DeleteSite(nth + 1); }, everybody});
  all->push_back({"delete one report of 100", -1, content, sites,
                  [](Contender& c, int nth) { return c.DeleteReport(nth + 1); }, everybody});
}

void AddSettings(std::vector<Operation>* all) {
  const Content content = Alignments(0, 100);
  const auto add = [&](const char* name, bool (Contender::*operation)()) {
    all->push_back(
        {name, -1, content, 50, [operation](Contender& c, int) { return (c.*operation)(); }, everybody});
  };
  add("save preferences", &Contender::SavePreferences);
  add("restore preferences", &Contender::RestorePreferences);
  add("store screens", &Contender::StoreScreens);
  add("restore screens", &Contender::RestoreScreens);
}

void AddConversions(std::vector<Operation>* all) {
  for (const bool orphans : {false, true}) {
    const std::string suffix = orphans ? ", orphans" : "";
    for (const int alignments : {100, 1000, 10000, 50000}) {
      for (int version = 1; version < 7; ++version) {
        all->push_back({"convert " + std::to_string(version) + " to " + std::to_string(version + 1) + suffix,
                        alignments, OldFile(version, alignments, orphans), 1,
                        [version](Contender& c, int) { return c.Convert(version); }, converters});
      }
      const auto chain = [](Contender& c, int) {
        for (int version = 1; version < 7; ++version) {
          if (!c.Convert(version)) return false;
        }
        return true;
      };
      all->push_back(
          {"convert 1 to 7" + suffix, alignments, OldFile(1, alignments, orphans), 1, chain, converters});
    }
  }
}

}  // namespace

std::string Operation::Title() const { return size < 0 ? name : name + "/" + std::to_string(size); }

std::vector<Operation> Operations(const Limits& limits) {
  std::vector<Operation> all;
  const auto keepUpTo = [&all](int limit, auto add) {
    std::vector<Operation> some;
    add(&some);
    std::copy_if(some.begin(), some.end(), std::back_inserter(all),
                 [limit](const Operation& operation) { return operation.size <= limit; });
  };
  keepUpTo(limits.size, AddCreation);
  keepUpTo(limits.size, AddSaves);
  keepUpTo(limits.size, AddReads);
  keepUpTo(limits.size, AddDeletions);
  keepUpTo(limits.size, AddSettings);
  keepUpTo(limits.conversionSize, AddConversions);
  return all;
}
