// The upgrade step that turns the routing stack's numbered prefix access lists into named prefix lists, and the pieces
// that it is made of. Handles: update.h.
#pragma once

#include <cstdint>
#include <string>

#include "bgp_update/export.h"
#include "confd_lib.h"

/**
 * Gives each row of "/DC-AALL-MIB/aallPreAccessListTable/aallPreAccessListEntry" its sequence in a named
 * "/prefix-list", creates the lists and the maps between their names and numbers, and carries over the number that the
 * next new list gets.
 *
 * Rows are read in batches of 50. The name of a list is looked up once, in the hidden table of names under the router
 * entity's index or, failing that, under the index that follows it. A row whose list has no name is logged and left
 * out; so is what cannot be written of a row. A value of another type than the data model gives it ends the process by
 * a failed assertion.
 *
 * @param rm_index the index of the BGP router entity (bgpRmEntIndex), under which the lists' names are stored
 * @return -1 when the next free number cannot be read, a batch cannot be read (what earlier batches gave stays written,
 *         the next free number is not), or the next free number cannot be written; 0 in every other case
 */
BGP_UPDATE_EXPORT int32_t update_prefix_list(int32_t maapi_socket, int32_t thandle, int32_t cdb_socket,
                                             uint32_t rm_index);

/**
 * Writes one row: its list with the maps, where this is the list's first row, and its sequence. A failure of the one
 * does not stop the other.
 *
 * @param jpfx        the row's position in its batch, from 0
 * @param sequence    the row's rule index, which becomes the sequence number
 * @param pfx_entries the values of the batch, nine for each row in the order of the schema; borrowed
 * @param name        the list's name
 * @param list_index  the list's number
 * @return 0 always; failures are logged
 */
BGP_UPDATE_EXPORT int32_t update_entry(int32_t maapi_socket, int32_t thandle, int jpfx, uint32_t sequence,
                                       confd_value_t* pfx_entries, std::string name, int32_t list_index);

/**
 * Creates "/prefix-list/{name}" and its entries in both maps of "/prefix-list-internal". A list that is there already
 * is left alone, and so are the maps then.
 *
 * @param name       the list's name
 * @param list_index the list's number
 * @return 0, or -1 at the first write that fails; what was written before it stays
 */
BGP_UPDATE_EXPORT int32_t create_hl_and_internal_entries(int32_t maapi_socket, int32_t thandle, std::string name,
                                                         int32_t list_index);

/**
 * Creates the sequence of a row in its list: address, bounds ("ge", "le") where they are not 0, and action. The action
 * keeps its number.
 *
 * @param jpfx        the row's position in its batch, from 0
 * @param sequence    the sequence number
 * @param pfx_entries the values of the batch, nine for each row in the order of the schema; borrowed. Of the row's
 *                    values from the prefix length on, one of another type ends the process by a failed assertion
 * @param name        the list's name; the list must be there
 * @param list_index  the list's number, not used
 * @return 0, or -1 at the first write that fails, such as for a sequence that is there already; what was written before
 *         it stays
 */
BGP_UPDATE_EXPORT int32_t create_hl_sequence_entry(int32_t maapi_socket, int32_t thandle, int jpfx, uint32_t sequence,
                                                   confd_value_t* pfx_entries, std::string name, int32_t list_index);
