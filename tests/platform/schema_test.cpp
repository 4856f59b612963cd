// The data model as the platform reads it: tags and namespaces, the layout of rows, defaults, validation.
#include "schema/schema.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "schema/name_hash.h"
#include "small_schema.h"

namespace {

using bgp_platform::schema::BaseType;
using bgp_platform::schema::builtin_modules;
using bgp_platform::schema::Module;
using bgp_platform::schema::ModuleText;
using bgp_platform::schema::name_hash;
using bgp_platform::schema::Node;
using bgp_platform::schema::NodeKind;
using bgp_platform::schema::Record;
using bgp_platform::schema::Schema;
using bgp_platform::schema::SchemaError;
using schema_test::refusal;
using schema_test::small;
using testing::ElementsAre;
using testing::HasSubstr;

const Schema& builtin()
{
    return *Schema::builtin();
}

const Node* find(const Schema& schema, std::initializer_list<std::string_view> names)
{
    const Node* node = nullptr;
    for (const std::string_view name : names) {
        node = node == nullptr ? schema.top_node(name, nullptr) : node->child(name);
        if (node == nullptr) {
            ADD_FAILURE() << "no node " << name;
            return nullptr;
        }
    }
    return node;
}

std::vector<std::string> names(const std::vector<const Node*>& nodes)
{
    std::vector<std::string> names;
    for (const Node* node : nodes) {
        names.push_back(node->name);
    }
    return names;
}

struct Tag {
    uint32_t number;
    const char* name;
};

constexpr Tag kTags[] = {
    {0x6553535E, "bgpRmEntIndex"},
    {0x7E3B5CE0, "bgpRmEntSelectDeferTime"},
    {0x03A22EFF, "bgpRmEntStalePathTime"},
    {0x35F32D06, "bgpRmEntAsSize"},
    {0x5AFDF531, "bgpRmEntLocalAs"},
    {0x6B08A5D1, "bgpRmEntAdminStatus"},
    {0x1DEC19F6, "bgpRmEntI3EntIndex"},
    {0x40B1EE55, "bgpRmEntSupportIpv6"},
    {0x037C186D, "bgpRmEntLocalIdentifier"},
    {0x71CB58FD, "bgpRmEntVrfName"},
    {0x6D007C5B, "bgpRmAfiSafiAfi"},
    {0x5DFD20D8, "bgpRmAfiSafiSafi"},
    {0x315D27DA, "bgpRmAfiSafiAdminStatus"},
    {0x2EF8227E, "bgpNmEntIndex"},
    {0x7AAA6E13, "bgpNmEntRmIndex"},
    {0x25710DF4, "bgpNmEntSckIndex"},
    {0x64751288, "bgpNmEntAdminStatus"},
    {0x7D91224B, "bgpNmEntVrfName"},
    {0x3CF2D57B, "bgpNmListenIndex"},
    {0x56C758C3, "bgpNmListenAddrType"},
    {0x2E5F6A91, "bgpNmListenAddr"},
    {0x2D7D2A72, "bgpNmListenPort"},
    {0x79538CBE, "bgpNmListenAdminStatus"},
    {0x25E71C2E, "bgpRmAfmJoin"},
    {0x00FDB8CE, "bgpRmAfmPartnerIndex"},
    {0x77ED81B4, "bgpRmAfmAfi"},
    {0x73CA79E4, "bgpRmAfmSafi"},
    {0x158C5770, "bgpRmAfmAdminStatus"},
    {0x09333AAC, "rtmEntityFteIndex"},
    {0x3BECF52E, "rtmEntityAddressFamily"},
    {0x26DCB9FD, "rtmEntityI3Index"},
    {0x01F1987F, "rtmEntityAdminStat"},
    {0x60B77A41, "rtmMjRtmFteIndex"},
    {0x0F39AC2A, "rtmMjSlaveFteId"},
    {0x3247A0F6, "rtmMjSlaveType"},
    {0x28CC170B, "rtmMjSafi"},
    {0x7E6EA064, "rtmMjAdminStatus"},
    {0x6A914910, "rtmRedistFteIndex"},
    {0x7495DEB9, "rtmRedistEntryId"},
    {0x41BBFC01, "rtmRedistInfoDest"},
    {0x27B53C74, "rtmRedistAddrFilterType"},
    {0x4673DA6D, "rtmRedistInfoSrc"},
    {0x0FC4103E, "rtmRedistRedistFlag"},
    {0x7EDD4BB5, "rtmRedistAdminStat"},
    {2019868348, "bgpPeerEntry"},
    {633450320, "bgpPeerAfiSafiEntry"},
    {511158643, "bgpPeerLocalAddrType"},
    {1732659340, "bgpPeerLocalAddr"},
    {117318093, "bgpPeerLocalPort"},
    {1849096296, "bgpPeerRemoteAddrType"},
    {986037174, "bgpPeerRemoteAddr"},
    {601373218, "bgpPeerRemotePort"},
    {1874805553, "bgpPeerLocalAddrScopeId"},
    {1083461765, "bgpPeerConfigDropWarn"},
    {1532911794, "bgpPeerConfigMaxPrfx"},
    {1978102995, "bgpPeerAfiSafiAfi"},
    {976835779, "bgpPeerAfiSafiSafi"},
    {238551178, "bgpPeerAfiSafiConfigDropWarn"},
};

TEST(SchemaTags, EveryTag_IsTheHashOfItsName)
{
    for (const Tag& tag : kTags) {
        EXPECT_EQ(name_hash(tag.name), tag.number) << tag.name;
    }
}

TEST(SchemaTags, EveryTag_LeadsBackToItsName)
{
    for (const Tag& tag : kTags) {
        EXPECT_STREQ(builtin().name_of(tag.number), tag.name);
    }
}

TEST(SchemaTags, NumberOfNoName_HasNone)
{
    EXPECT_EQ(builtin().name_of(1), nullptr);
}

TEST(SchemaTags, TwoNamesWithOneTag_AreRefused)
{
    // Found by trying names in turn until two had the same hash.
    ASSERT_EQ(name_hash("leaf-2483"), name_hash("leaf-68279"));
    EXPECT_THAT(refusal("leaf leaf-2483 { type string; } leaf leaf-68279 { type string; }"),
                HasSubstr("the names leaf-2483 and leaf-68279 have the same tag"));
}

TEST(SchemaModules, Namespaces_AreThoseOfTheDevice)
{
    for (const char* name : {"DC-BGP-MIB", "DC-RTM-MIB", "DC-AALL-MIB", "DC-OSPF-MIB", "MPLS-VPN-MIB"}) {
        const Module* const module = builtin().module_by_prefix(name);
        ASSERT_NE(module, nullptr) << name;
        EXPECT_EQ(module->name, name);
        EXPECT_EQ(module->prefix, name);
        EXPECT_EQ(module->uri, std::string("http://tail-f.com/ns/mibs/") + name);
    }
    for (const char* name : {"metacli-internal", "router", "prefix-list", "redist-protocol", "bgp-internal"}) {
        const Module* const module = builtin().module_by_prefix(name);
        ASSERT_NE(module, nullptr) << name;
        EXPECT_EQ(module->uri, std::string("urn:bgp-update:yang:") + name);
    }
}

TEST(SchemaModules, EveryModule_IsFoundByHashAndNamespace)
{
    EXPECT_EQ(builtin().module_by_hash(82011741), builtin().module_by_prefix("DC-BGP-MIB"));
    for (const ModuleText& text : builtin_modules()) {
        const Module* const module = builtin().module_by_prefix(text.name);
        ASSERT_NE(module, nullptr) << text.name;
        EXPECT_EQ(module->hash, name_hash(module->uri));
        EXPECT_EQ(builtin().module_by_hash(module->hash), module);
        EXPECT_EQ(builtin().module_by_uri(module->uri), module);
        EXPECT_EQ(builtin().name_of(module->hash), module->uri);
    }
    EXPECT_EQ(builtin().module_by_hash(1), nullptr);
    EXPECT_EQ(builtin().module_by_uri("urn:none"), nullptr);
    EXPECT_EQ(builtin().module_by_prefix("none"), nullptr);
}

TEST(SchemaModules, BuiltInTexts_AreTheFilesOfTheFolder)
{
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(BGP_SOURCE_DIR "/yang")) {
        const std::string name = entry.path().stem().string();
        const auto text = std::find_if(builtin_modules().begin(), builtin_modules().end(),
                                       [&](const ModuleText& module) { return module.name == name; });
        ASSERT_NE(text, builtin_modules().end()) << name;
        std::ostringstream content;
        content << std::ifstream(entry.path()).rdbuf();
        EXPECT_EQ(text->text, content.str()) << name;
        ++files;
    }
    EXPECT_EQ(files, builtin_modules().size());
}

TEST(SchemaModules, FolderOfModules_ReadsLikeTheBuiltInOnes)
{
    const auto schema = Schema::from_folder(BGP_SOURCE_DIR "/yang");
    EXPECT_EQ(names(schema->top_nodes()), names(builtin().top_nodes()));
}

TEST(SchemaModules, BuiltInSchema_IsMadeOnce)
{
    EXPECT_EQ(Schema::builtin(), Schema::builtin());
}

TEST(SchemaNodes, TopNode_IsFoundAloneOrInItsModule)
{
    const Module* const internal = builtin().module_by_prefix("metacli-internal");
    const Node* const node = builtin().top_node("internal", nullptr);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->module, internal);
    EXPECT_EQ(node->parent, nullptr);
    EXPECT_EQ(builtin().top_node("internal", internal), node);
    EXPECT_EQ(builtin().top_node("internal", builtin().module_by_prefix("router")), nullptr);
    EXPECT_EQ(builtin().top_node("nothing", nullptr), nullptr);
}

TEST(SchemaNodes, TopNameOfTwoModules_NeedsItsModule)
{
    const auto schema = Schema::from_modules({{"one", "module one { namespace \"urn:1\"; prefix o; container top; }"},
                                              {"two", "module two { namespace \"urn:2\"; prefix t; container top; }"}});
    EXPECT_EQ(schema->top_node("top", nullptr), nullptr);
    const Node* const second = schema->top_node("top", schema->module_by_prefix("t"));
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(second->module->name, "two");
}

TEST(SchemaNodes, Child_IsFoundByNameAndTag)
{
    const Node* const entry = find(builtin(), {"DC-BGP-MIB", "bgpRmEntTable", "bgpRmEntEntry"});
    ASSERT_NE(entry, nullptr);
    const Node* const leaf = entry->child("bgpRmEntAsSize");
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(entry->child(0x35F32D06U), leaf);
    EXPECT_EQ(leaf->tag, 0x35F32D06U);
    EXPECT_EQ(leaf->parent, entry);
    EXPECT_EQ(leaf->path(), "/DC-BGP-MIB/bgpRmEntTable/bgpRmEntEntry/bgpRmEntAsSize");
    EXPECT_EQ(entry->child("nothing"), nullptr);
    EXPECT_EQ(entry->child(1U), nullptr);
}

TEST(SchemaRecords, Peer_HasItsEightKeysFirst)
{
    const Node* const list = find(builtin(), {"DC-BGP-MIB", "bgpPeerTable", "bgpPeerEntry"});
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->kind, NodeKind::List);
    const Record& record = *list->entry;
    EXPECT_EQ(record.owner, list);
    ASSERT_EQ(record.keys, 8);
    const std::vector<std::string> leaves = names(record.values);
    EXPECT_THAT(
        std::vector<std::string>(leaves.begin(), leaves.begin() + 8),
        ElementsAre("bgpRmEntIndex", "bgpPeerLocalAddrType", "bgpPeerLocalAddr", "bgpPeerLocalPort",
                    "bgpPeerRemoteAddrType", "bgpPeerRemoteAddr", "bgpPeerRemotePort", "bgpPeerLocalAddrScopeId"));
    for (uint16_t slot = 0; slot < record.values.size(); ++slot) {
        EXPECT_EQ(record.values[slot]->slot, slot);
        EXPECT_EQ(record.values[slot]->record, &record);
        EXPECT_EQ(record.values[slot]->key, slot < 8) << record.values[slot]->name;
    }
}

TEST(SchemaRecords, AccessListRule_HasItsNodesWhereABatchReadExpectsThem)
{
    const Node* const list = find(builtin(), {"DC-AALL-MIB", "aallPreAccessListTable", "aallPreAccessListEntry"});
    ASSERT_NE(list, nullptr);
    EXPECT_THAT(names(list->children),
                ElementsAre("aallPreAccessListListIndex", "aallPreAccessListRuleIndex", "aallPreAccessListAdminStatus",
                            "aallPreAccessListAddrType", "aallPreAccessListAddrPrefix", "aallPreAccessListAddrPrefLen",
                            "aallPreAccessListAddrPrefGe", "aallPreAccessListAddrPrefLe", "aallPreAccessListIncluded"));
}

TEST(SchemaRecords, ContainerInAnEntry_HasItsLeavesInTheEntrysRecord)
{
    const Node* const bgp = find(builtin(), {"router", "bgp"});
    ASSERT_NE(bgp, nullptr);
    EXPECT_THAT(names(bgp->children),
                ElementsAre("as-number", "router-id", "as-size", "administrative-status", "bgp", "vrf"));
    EXPECT_THAT(names(bgp->entry->values), ElementsAre("as-number", "router-id", "as-size", "administrative-status",
                                                       "default-local-preference", "cluster-id"));
    EXPECT_THAT(names(bgp->entry->lists), ElementsAre("vrf"));
    EXPECT_EQ(bgp->child("bgp")->record, bgp->entry);
    EXPECT_EQ(bgp->child("bgp")->child("cluster-id")->slot, 5);
}

std::string list_of_keys(int count)
{
    std::string keys;
    std::string leaves;
    for (int i = 0; i < count; ++i) {
        keys += " k" + std::to_string(i);
        leaves += " leaf k" + std::to_string(i) + " { type uint32; }";
    }
    return "container c { list wide { key \"" + keys.substr(1) + "\";" + leaves + " } }";
}

TEST(SchemaRecords, ListOfMoreKeysThanACursorHolds_IsRefused)
{
    const auto widest = small(list_of_keys(MAXKEYLEN - 1));
    EXPECT_EQ(find(*widest, {"c", "wide"})->entry->keys, MAXKEYLEN - 1);
    try {
        small(list_of_keys(MAXKEYLEN));
        ADD_FAILURE() << "not refused";
    } catch (const SchemaError& error) {
        EXPECT_STREQ(error.what(), "/small:c/wide: a list of 32 keys is not supported: a cursor holds 31");
    }
}

TEST(SchemaRecords, LeafList_IsAListOfOneValue)
{
    const Node* const free_index = find(builtin(), {"internal", "vrf-config", "route-map", "vrf", "free-index"});
    ASSERT_NE(free_index, nullptr);
    EXPECT_EQ(free_index->kind, NodeKind::LeafList);
    EXPECT_EQ(free_index->record, free_index->parent->entry);
    EXPECT_EQ(free_index->record->lists[free_index->slot], free_index);
    EXPECT_EQ(free_index->entry->owner, free_index);
    EXPECT_EQ(free_index->entry->keys, 1);
    EXPECT_THAT(free_index->entry->values, ElementsAre(free_index));
    EXPECT_TRUE(free_index->children.empty());
}

TEST(SchemaRecords, Root_HoldsTheTopListsAndTheLeavesOfTopContainers)
{
    const Record& root = builtin().root();
    EXPECT_EQ(root.owner, nullptr);
    EXPECT_EQ(root.keys, 0);
    const Node* const prefix_list = builtin().top_node("prefix-list", nullptr);
    ASSERT_NE(prefix_list, nullptr);
    EXPECT_EQ(root.lists[prefix_list->slot], prefix_list);
    const Node* const next = find(builtin(), {"prefix-list-internal", "name-next-index"});
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(root.values[next->slot], next);
}

TEST(SchemaRecords, KeysOutOfOrderInTheModule_ComeFirstInKeyOrder)
{
    const auto schema =
        small("list l { key \"b a\"; leaf x { type int8; } leaf a { type int8; } leaf b { type int8; } }");
    EXPECT_THAT(names(find(*schema, {"l"})->entry->values), ElementsAre("b", "a", "x"));
}

TEST(SchemaTypes, Typedefs_BecomeTheirKindOfValue)
{
    const auto schema = small(
        "typedef own { type t:hex-list; } grouping g { leaf grouped { type own; } } container c {"
        " leaf octets { type t:hex-list; } leaf four { type t:ipv4-address; } leaf six { type t:ipv6-address; }"
        " leaf ip { type t:ip-address; } leaf prefix { type t:ipv4-prefix; } leaf status { type t:status; }"
        " leaf number { type int16 { range \"-5..-3|7\"; } } leaf text { type string { length \"1..4\"; } }"
        " leaf flag { type boolean; } leaf nothing { type empty; } leaf wide { type uint64; } leaf byte { type uint8; }"
        " leaf points { type leafref { path \"../octets\"; } } uses g; }");
    struct Expected {
        const char* leaf;
        BaseType base;
        confd_vtype vtype;
        const char* name;
    };
    const Expected expected[] = {
        {"octets", BaseType::Octets, C_BINARY, "hex-list"},
        {"grouped", BaseType::Octets, C_BINARY, "hex-list"},
        {"points", BaseType::Octets, C_BINARY, "hex-list"},
        {"four", BaseType::Ipv4, C_IPV4, "ipv4-address"},
        {"six", BaseType::Ipv6, C_IPV6, "ipv6-address"},
        {"ip", BaseType::Ip, C_UNION, "ip-address"},
        {"prefix", BaseType::Ipv4Prefix, C_IPV4PREFIX, "ipv4-prefix"},
        {"status", BaseType::Enum, C_ENUM_VALUE, "status"},
        {"number", BaseType::Int, C_INT16, "int16"},
        {"text", BaseType::Text, C_BUF, "string"},
        {"flag", BaseType::Bool, C_BOOL, "boolean"},
        {"nothing", BaseType::Empty, C_XMLTAG, "empty"},
        {"wide", BaseType::Uint, C_UINT64, "uint64"},
        {"byte", BaseType::Uint, C_UINT8, "uint8"},
    };
    for (const Expected& leaf : expected) {
        const Node* const node = find(*schema, {"c", leaf.leaf});
        ASSERT_NE(node, nullptr);
        EXPECT_EQ(node->type->base, leaf.base) << leaf.leaf;
        EXPECT_EQ(node->type->vtype, leaf.vtype) << leaf.leaf;
        EXPECT_EQ(node->type->name, leaf.name) << leaf.leaf;
    }
    const auto& intervals = find(*schema, {"c", "number"})->type->intervals;
    ASSERT_EQ(intervals.size(), 2U);
    EXPECT_EQ(intervals[0].low, -5);
    EXPECT_EQ(static_cast<int64_t>(intervals[0].high), -3);
    EXPECT_EQ(intervals[1].low, 7);
    EXPECT_EQ(find(*schema, {"c", "text"})->type->intervals.at(0).high, 4U);
    EXPECT_EQ(find(*schema, {"c", "octets"})->type, find(*schema, {"c", "grouped"})->type);
}

TEST(SchemaTypes, Enumeration_IsSortedByNumberAndFoundByName)
{
    const Node* const source = find(builtin(), {"DC-RTM-MIB", "rtmRedistTable", "rtmRedistEntry", "rtmRedistInfoSrc"});
    ASSERT_NE(source, nullptr);
    EXPECT_EQ(source->type->find_enum("ospf")->number, 0xD0000);
    EXPECT_EQ(source->type->find_enum(0x20000)->name, "local");
    EXPECT_EQ(source->type->find_enum("static"), nullptr);
}

TEST(SchemaTypes, Defaults_AreValuesOfTheirType)
{
    const Node* const ge = find(
        builtin(), {"DC-AALL-MIB", "aallPreAccessListTable", "aallPreAccessListEntry", "aallPreAccessListAddrPrefGe"});
    ASSERT_NE(ge, nullptr);
    EXPECT_EQ(ge->type->text(ge->default_value), "0");
    const Node* const next = find(builtin(), {"internal", "vrf-config", "route-policy", "vrf", "next-index"});
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(next->default_value.as_uint(), 1U);
    const Node* const disable =
        find(builtin(), {"DC-BGP-MIB", "bgpPeerAfiSafiTable", "bgpPeerAfiSafiEntry", "bgpPeerAfiSafiDisable"});
    ASSERT_NE(disable, nullptr);
    EXPECT_TRUE(disable->default_value.absent());
}

TEST(SchemaTypes, StateAndPresence_AreMarked)
{
    const auto schema =
        small("container c { presence here; leaf s { config false; type string; } leaf x { type string; } }");
    const Node* const container = find(*schema, {"c"});
    EXPECT_EQ(container->kind, NodeKind::Presence);
    EXPECT_EQ(schema->root().values[container->slot], container);
    EXPECT_TRUE(container->child("s")->state);
    EXPECT_FALSE(container->child("x")->state);
}

TEST(SchemaTypes, Operations_HoldNoConfiguration)
{
    const auto schema = small(
        "rpc go { input { leaf a { type bits { bit x; } } } } notification n { leaf b { type binary; } } container c;");
    EXPECT_THAT(names(schema->top_nodes()), ElementsAre("c"));
}

TEST(SchemaValidation, ValidConfiguration_HasNoMessage)
{
    EXPECT_EQ(builtin().validate(""), "");
    EXPECT_EQ(
        builtin().validate("<router xmlns=\"urn:bgp-update:yang:router\"><bgp><as-number>1</as-number></bgp></router>"),
        "");
}

TEST(SchemaValidation, BrokenRule_IsToldWithItsPath)
{
    const auto schema = small(
        "container c { must \"not(a) or b\" { error-message \"a needs b\"; } leaf a { type int8; } leaf b { type int8; "
        "} }");
    EXPECT_EQ(schema->validate("<c xmlns=\"urn:small\"><a>1</a><b>1</b></c>"), "");
    const std::string message = schema->validate("<c xmlns=\"urn:small\"><a>1</a></c>");
    EXPECT_THAT(message, HasSubstr("a needs b"));
    EXPECT_THAT(message, HasSubstr("/small:c"));
}

TEST(SchemaValidation, UnknownAndStateData_AreNotValid)
{
    const auto schema = small("container c { leaf s { config false; type string; } }");
    EXPECT_THAT(schema->validate("<c xmlns=\"urn:small\"><nope/></c>"), HasSubstr("nope"));
    EXPECT_THAT(schema->validate("<c xmlns=\"urn:small\"><s>x</s></c>"), HasSubstr("s"));
    EXPECT_NE(schema->validate("<c xmlns=\"urn:small\">"), "");
}

}  // namespace
