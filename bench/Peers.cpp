#include "bench/Peers.h"

#include <cstring>

#include "bench/DriverCApi.h"
#include "bench/DriverQtSql.h"
#include "bench/DriverSqliteCpp.h"
#include "bench/Operations.h"
#include "bench/Peer.h"

std::unique_ptr<Contender> MakePeer(const char* name) {
  const auto is = [name](const char* other) { return std::strcmp(name, other) == 0; };
  if (is(Contenders::floor)) return std::make_unique<Peer<DriverCApi<const char*>>>();
  if (is(Contenders::floorByHash)) return std::make_unique<Peer<DriverCApi<const char*>>>(Search::ByHash);
  if (is(Contenders::floorWithValues)) return std::make_unique<Peer<DriverCApi<QString>>>();
  if (is(Contenders::qtSql)) return std::make_unique<Peer<DriverQtSql>>();
  if (is(Contenders::sqliteCpp)) return std::make_unique<Peer<DriverSqliteCpp>>();
  return nullptr;
}
