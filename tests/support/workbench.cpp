#include "support/workbench.h"

#include <arpa/inet.h>

#include <stdexcept>

#include "bgp_update/bgp_utils.h"

namespace bgp_test {

namespace {

// A router entity of AS 65010 with a peer, a VRF, a prefix list and a route map, of before the upgrade; the numbers of
// the VRF red and what is redistributed.
constexpr char kConfiguration[] = R"(<config xmlns="http://tail-f.com/ns/config/1.0">
<DC-BGP-MIB xmlns="http://tail-f.com/ns/mibs/DC-BGP-MIB">
  <bgpRmEntTable><bgpRmEntEntry><bgpRmEntIndex>5</bgpRmEntIndex><bgpRmEntLocalAs>65010</bgpRmEntLocalAs>
    <bgpRmEntLocalIdentifier>0a:00:00:01</bgpRmEntLocalIdentifier><bgpRmEntSupportIpv6>false</bgpRmEntSupportIpv6>
  </bgpRmEntEntry></bgpRmEntTable>
  <bgpNmEntTable><bgpNmEntEntry><bgpNmEntIndex>5</bgpNmEntIndex><bgpNmEntRmIndex>5</bgpNmEntRmIndex></bgpNmEntEntry>
  </bgpNmEntTable>
  <bgpNmListenTable><bgpNmListenEntry><bgpNmEntIndex>5</bgpNmEntIndex><bgpNmListenIndex>5</bgpNmListenIndex>
  </bgpNmListenEntry></bgpNmListenTable>
  <bgpPeerTable><bgpPeerEntry>PEER<bgpPeerLocalNm>5</bgpPeerLocalNm></bgpPeerEntry></bgpPeerTable>
  <bgpPeerAfiSafiTable><bgpPeerAfiSafiEntry>PEER<bgpPeerAfiSafiAfi>ipv4</bgpPeerAfiSafiAfi>
    <bgpPeerAfiSafiSafi>unicast</bgpPeerAfiSafiSafi></bgpPeerAfiSafiEntry></bgpPeerAfiSafiTable>
  <bgpRouteMapTable><bgpRouteMapEntry><bgpRmEntIndex>5</bgpRmEntIndex><bgpRouteMapIndex>1</bgpRouteMapIndex>
    <bgpRouteMapEntryIndex>10</bgpRouteMapEntryIndex></bgpRouteMapEntry></bgpRouteMapTable>
</DC-BGP-MIB>
<DC-RTM-MIB xmlns="http://tail-f.com/ns/mibs/DC-RTM-MIB">
  <rtmMjTable><rtmMjEntry><rtmMjRtmFteIndex>1</rtmMjRtmFteIndex><rtmMjSlaveFteId>5</rtmMjSlaveFteId>
    <rtmMjSlaveType>ariPrtnrBgp</rtmMjSlaveType></rtmMjEntry></rtmMjTable>
  <rtmRedistTable><rtmRedistEntry><rtmRedistFteIndex>1</rtmRedistFteIndex><rtmRedistEntryId>5</rtmRedistEntryId>
    <rtmRedistInfoDest>bgp</rtmRedistInfoDest></rtmRedistEntry>
    <rtmRedistEntry><rtmRedistFteIndex>70</rtmRedistFteIndex><rtmRedistEntryId>33619970</rtmRedistEntryId>
    </rtmRedistEntry></rtmRedistTable>
</DC-RTM-MIB>
<DC-AALL-MIB xmlns="http://tail-f.com/ns/mibs/DC-AALL-MIB"><aallPreAccessListTable><aallPreAccessListEntry>
  <aallPreAccessListListIndex>7</aallPreAccessListListIndex><aallPreAccessListRuleIndex>5</aallPreAccessListRuleIndex>
  <aallPreAccessListAddrPrefix>0a:01:00:00</aallPreAccessListAddrPrefix>
  <aallPreAccessListAddrPrefLen>16</aallPreAccessListAddrPrefLen>
  <aallPreAccessListIncluded>permit</aallPreAccessListIncluded>
</aallPreAccessListEntry></aallPreAccessListTable></DC-AALL-MIB>
<redist-protocol xmlns="urn:bgp-update:yang:redist-protocol"><rtm-index>1</rtm-index><entry>5</entry>
  <protocol-xmltag>555337807</protocol-xmltag><protocol-index>5</protocol-index></redist-protocol>
<router xmlns="urn:bgp-update:yang:router"><bgp><as-number>65010</as-number>
  <administrative-status>up</administrative-status><vrf><name>red</name>
    <administrative-status>up</administrative-status>
    <neighbor><address>10.0.0.1</address><update-source-address>10.0.0.9</update-source-address></neighbor>
  </vrf></bgp></router>
<internal xmlns="urn:bgp-update:yang:metacli-internal">
  <bgpPeerEntry-global><entity>5</entity><peer>10.0.0.1</peer><keys>5 1 00:00:00:00 0 1 0a:00:00:01 0 0</keys>
  </bgpPeerEntry-global>
  <aallPreAccessListEntry-hidden>
    <aallPreAccessListEntry-get><entity>5</entity><list>7</list><name>customers</name></aallPreAccessListEntry-get>
    <aallPreAccessListEntry_next_free_index>8</aallPreAccessListEntry_next_free_index>
  </aallPreAccessListEntry-hidden>
  <rtmRedistEntry-hidden><rtmRedistEntry-get><entity>5</entity><rtm-index>1</rtm-index><entry>555337809</entry>
    <rtmRedistAddrFilterType>ipv4</rtmRedistAddrFilterType><rtmRedistAddrFilter>0a:01:00:00</rtmRedistAddrFilter>
    <rtmRedistAddrFilterLen>16</rtmRedistAddrFilterLen></rtmRedistEntry-get></rtmRedistEntry-hidden>
  <ospf-proc-id-to-index><process>1</process><vrf_name>red</vrf_name><proc_id>2</proc_id><index>3</index>
  </ospf-proc-id-to-index>
  <vrf-config><stringTOindex><name>red</name><vrf-idx>7</vrf-idx><rtmIndex>70</rtmIndex><rtmIndexV6>76</rtmIndexV6>
    </stringTOindex><indexTOstring><index>7</index><vname>red</vname></indexTOstring></vrf-config>
</internal>
</config>)";

constexpr char kPeerKeys[] =
    "<bgpRmEntIndex>5</bgpRmEntIndex><bgpPeerLocalAddrType>ipv4</bgpPeerLocalAddrType>"
    "<bgpPeerLocalAddr>00:00:00:00</bgpPeerLocalAddr><bgpPeerLocalPort>0</bgpPeerLocalPort>"
    "<bgpPeerRemoteAddrType>ipv4</bgpPeerRemoteAddrType><bgpPeerRemoteAddr>0a:00:00:01</bgpPeerRemoteAddr>"
    "<bgpPeerRemotePort>0</bgpPeerRemotePort><bgpPeerLocalAddrScopeId>0</bgpPeerLocalAddrScopeId>";

std::string configuration()
{
    std::string xml = kConfiguration;
    for (std::size_t at = xml.find("PEER<"); at != std::string::npos; at = xml.find("PEER<")) {
        xml.replace(at, 4, kPeerKeys);
    }
    return xml;
}

}  // namespace

Workbench::Workbench() : keypath(std::make_unique<confd_hkeypath_t>())
{
    device.load_text(configuration());
    in_addr address{};
    inet_pton(AF_INET, "10.0.0.1", &address);
    device.set_interfaces({address});
    CONFD_SET_IPV4(&value, address);
    CONFD_SET_ENUM_VALUE(&enumerated, 1);
    CONFD_SET_NOEXISTS(&out);
    CONFD_SET_NOEXISTS(&more_out);
    keypath->len = 1;
    CONFD_SET_XMLTAG(&keypath->v[0][0], 1, 2);
    open();
}

Workbench::~Workbench()
{
    confd_free_dup_to_value(&value);
    for (confd_value_t& leaf : batch) {
        confd_free_value(&leaf);
    }
    if (cursor.n > 0) {
        maapi_destroy_cursor(&cursor);
    }
    if (sock >= 0) {
        BgpUtils::EndCdbSession(sock);
    }
}

void Workbench::open()
{
    const bgp_platform::UpgradeHandles upgrade = device.open_upgrade();
    maapi = upgrade.maapi_socket;
    thandle = upgrade.thandle;
    cdb = upgrade.cdb_socket;
    tctx = device.transaction_context();
}

void Workbench::commit()
{
    device.commit();
    open();
}

void Workbench::stand_on_first_row(const char* table)
{
    if (maapi_init_cursor(maapi, thandle, &cursor, table) != CONFD_OK || maapi_get_next(&cursor) != CONFD_OK ||
        cursor.n == 0) {
        throw std::logic_error(std::string("no row of ") + table);
    }
}

}  // namespace bgp_test
