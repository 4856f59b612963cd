// A small schema with every kind of node, and paths into it, for the tests of configurations and their changes.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "schema/schema.h"
#include "store/configuration.h"
#include "store_records.h"

namespace store_test {

using bgp_platform::schema::Schema;
using bgp_platform::store::Path;
using bgp_platform::store::Selector;

inline const char* const kPlantModule = R"(
module plant {
  yang-version 1.1;
  namespace "urn:test:plant";
  prefix plant;
  container plant {
    leaf label { type string; }
    container office {
      leaf room { type uint32; }
      leaf floor { type uint32; default 3; }
      leaf-list phone { type uint32; }
    }
    container alarm {
      presence "armed";
      leaf delay { type uint32; default 7; }
      list sensor {
        key id;
        leaf id { type uint32; }
      }
    }
    list rack {
      key "row name";
      leaf row { type uint32; }
      leaf name { type string; }
      leaf width { type uint32; default 19; }
      leaf note { type string; }
      container power {
        leaf watts { type uint32; }
        container backup {
          presence "has a second feed";
          leaf minutes { type uint32; }
        }
        list feed {
          key id;
          leaf id { type uint32; }
          leaf note { type string; }
        }
      }
      leaf-list tag { type string; }
    }
  }
}
)";

inline std::shared_ptr<const Schema> plant_schema()
{
    static const std::shared_ptr<const Schema> schema = Schema::from_modules({{"plant", kPlantModule}});
    return schema;
}

// A path, written from the top: at("plant").to("rack", {num(1), text("north")}).to("width").
class PlantPath {
public:
    PlantPath() = default;

    // Down to a child; with keys, to its entry.
    PlantPath to(std::string_view name, std::vector<Value> keys = {}) const
    {
        PlantPath longer = *this;
        longer.path_.node = path_.node == nullptr ? plant_schema()->top_node(name, nullptr) : path_.node->child(name);
        if (!keys.empty()) {
            longer.path_.entries.push_back(Selector{longer.path_.node, std::move(keys), -1});
        }
        return longer;
    }

    // Down to the n-th entry of a child.
    PlantPath to_nth(std::string_view name, std::ptrdiff_t position) const
    {
        PlantPath longer = to(name);
        longer.path_.entries.push_back(Selector{longer.path_.node, {}, position});
        return longer;
    }

    const bgp_platform::schema::Node& node() const { return *path_.node; }
    operator const Path&() const { return path_; }

private:
    Path path_;
};

inline PlantPath plant()
{
    return PlantPath().to("plant");
}

inline PlantPath rack(uint64_t row, std::string_view name)
{
    return plant().to("rack", {num(row), text(name)});
}

// With the racks "1 north" and "2 north", and "1 south", which has a note and the power feed 7.
inline bgp_platform::store::Configuration with_racks()
{
    bgp_platform::store::Configuration configuration{plant_schema()};
    const auto written = [](bgp_platform::store::Result result) {
        EXPECT_TRUE(result == bgp_platform::store::Result::Ok);
    };
    written(configuration.create(rack(1, "north")));
    written(configuration.create(rack(1, "south")));
    written(configuration.create(rack(2, "north")));
    written(configuration.set(rack(1, "south").to("note"), text("by the door")));
    written(configuration.create(rack(1, "south").to("power").to("feed", {num(7)})));
    return configuration;
}

}  // namespace store_test
