#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The binary interface of the built libqdcli.so, read by readelf from its
# dynamic section: exactly the handler names are exported (as functions, in
# the one version node), every platform operation is left for the host to
# provide, and no platform library is needed nor are symbols bound inside.
#
#   exported_symbols.sh LIBRARY VERSION_SCRIPT PLATFORM_HEADER
set -uo pipefail
lib=$1 map=$2 header=$3
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }
# Names in the first list and not in the second (both sorted, one a line).
only() { comm -23 <(echo "$1") <(echo "$2") | paste -sd' '; }
same() {  # what, got, expected
  [ "$2" = "$3" ] || fail "$1: unexpected [$(only "$2" "$3")], missing [$(only "$3" "$2")]"
}

# The exported handlers and callbacks, as the shell knows them, the two
# functions of the internal statistics report and the attribute catalogue.
handlers=$(sort <<'EOF'
qd_cli_conf_wrrqueue_cosmap
qd_cli_no_wrrqueue_cosmap
qd_cli_show_wrrqueue_cosmap
qdcli_interface_qoslimit_help_get
qdcli_interface_qoslimit_range_get
qdcli_pdcli_cmd_qd_def_get
qd_cli_show_queuing_if
qd_cli_show_queuing_intf_extend
qd_cli_show_queuing_ifindex_extend
qd_cli_show_queuing_if_extend
qd_cli_show_queuing_interface
qd_cli_show_queuing_ifindex
qd_cli_show_queuing_intf_all
qd_cli_show_queuing_hif
qd_cli_show_queuing_hif_xmlized
qd_cli_show_queuing_intf_switch
qd_cli_show_queuing_intf_switch_hif
qd_cli_show_internal_stats
qd_count_ports
qd_process_internal_stats
qd_cli_clear_queuing_interface
qd_cli_clear_queuing_all
qd_cli_clear_qos_stats_ifindex
qd_cli_clear_qos_stats_all
qd_cli_show_logging_onboard_flow_control_td
qd_cli_show_logging_onboard_flow_control_pe
process_qd_cli_show_vaq_drops_all
qd_cli_show_memstats
qd_cli_debug_show_intf
qd_cli_debug_show_all
qdcli_attr_catalogue
qdcli_attr_find
qdcli_attr_find_name
qdcli_attr_states
EOF
)

# The names between "global:" and "local:" of the version script.
script=$(perl -0pe 's{/\*.*?\*/}{}gs' "$map" | sed -n '/global:/,/local:/p' | grep -o '[A-Za-z_][A-Za-z0-9_]*;' | tr -d ';' | sort)
same "version script against the handler list" "$script" "$handlers"

# Dynamic symbols as "TYPE BIND VIS NDX NAME", the version suffix cut off.
syms=$(readelf --dyn-syms -W "$lib" | awk '$1 ~ /^[0-9]+:$/ && NF >= 8 { sub(/@.*/, "", $8); print $4, $5, $6, $7, $8 }')
[ -n "$syms" ] || { echo "FAIL: no dynamic symbols read from $lib"; exit 1; }
same "version nodes" "$(awk '$4 == "ABS" { print $5 }' <<<"$syms" | sort)" "QDCLI_0.1"
exported=$(awk '$4 != "UND" && $4 != "ABS" && ($2 == "GLOBAL" || $2 == "WEAK") && ($3 == "DEFAULT" || $3 == "PROTECTED") { print $5 }' <<<"$syms" | sort -u)
same "exported symbols against the version script" "$exported" "$script"
not_functions=$(awk '$4 != "UND" && $4 != "ABS" && $1 != "FUNC" { print $5 }' <<<"$syms" | sort -u)
[ -z "$(comm -12 <(echo "$not_functions") <(echo "$script"))" ] || fail "exported names that are no functions"

# The functions of the platform header: "type name(" from column 0.
ops=$(grep -Ev '^(typedef|QDCLI_)' "$header" | sed -nE 's/^(const[[:space:]]+)?[A-Za-z_][A-Za-z0-9_]*([[:space:]]+|[[:space:]]*\*[[:space:]]*)([A-Za-z_][A-Za-z0-9_]*)[[:space:]]*\(.*/\3/p' | sort -u)
for op in mts_send invoke_enumeration_function syserr2str mts_payload_get; do
  grep -qx "$op" <<<"$ops" || fail "the platform header was not read as expected: no $op"
done
defined=$(awk '$4 != "UND" { print $5 }' <<<"$syms" | sort -u)
undefined=$(awk '$4 == "UND" { print $5 }' <<<"$syms" | sort -u)
[ -z "$(comm -12 <(echo "$defined") <(echo "$ops"))" ] ||
  fail "platform operations defined by the library: $(comm -12 <(echo "$defined") <(echo "$ops") | paste -sd' ')"
[ -z "$(only "$ops" "$undefined")" ] || fail "platform operations not referenced: $(only "$ops" "$undefined")"
# The observer is the host's to offer or not: a weak reference.
awk '$2 == "WEAK" && $4 == "UND" && $5 == "qdcli_observer_get"' <<<"$syms" | grep -q . ||
  fail "qdcli_observer_get is not a weak undefined reference"

# Only the C and C++ runtimes (and a sanitizer's) are needed; no -Bsymbolic.
needed=$(readelf -d -W "$lib" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
[ -n "$needed" ] || fail "no DT_NEEDED entries read"
for name in $needed; do
  [[ $name =~ ^(libc\.so|libm\.so|libstdc\+\+\.so|libgcc_s\.so|ld-linux|lib[atl]san\.so|libubsan\.so) ]] ||
    fail "DT_NEEDED $name"
done
! readelf -d -W "$lib" | grep -q SYMBOLIC || fail "the library binds its own symbols (-Bsymbolic)"

[ "$failures" -eq 0 ] && echo "libqdcli ABI: $(wc -l <<<"$exported") exported handlers, $(wc -l <<<"$ops") platform operations left to the host"
exit $((failures != 0))
