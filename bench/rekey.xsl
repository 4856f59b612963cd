<?xml version="1.0"?>
<!-- Writes a configuration anew with index 1 in every row key that names an entity or a list of rules. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:bgp="http://tail-f.com/ns/mibs/DC-BGP-MIB" xmlns:aall="http://tail-f.com/ns/mibs/DC-AALL-MIB">
  <xsl:template match="@*|node()"><xsl:copy><xsl:apply-templates select="@*|node()"/></xsl:copy></xsl:template>
  <xsl:template match="bgp:bgpRmEntIndex|bgp:bgpNmEntIndex|aall:aallPreAccessListListIndex">
    <xsl:copy>1</xsl:copy>
  </xsl:template>
</xsl:stylesheet>
