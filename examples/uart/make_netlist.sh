#!/usr/bin/env bash
# Maps the UART onto the gates of gates/cells.lib with Yosys and simulates the result. Writes into gates/
# uart_gates.v, the netlist; uart_gates.json, the same as `kesncd activity --netlist` reads it; and
# uart_gates.vcd.gz, the dump of its simulation. Runs from any directory; a failed check leaves the old files in place.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

for tool in yosys iverilog vvp python3; do
  if ! command -v "$tool" >/dev/null; then
    echo "make_netlist.sh: $tool not found; install yosys, iverilog and python3" >&2
    exit 1
  fi
done

build=$(mktemp -d)
trap 'rm -rf "$build"' EXIT
cp "$here"/*.v "$here"/gates/cells.* "$build"
cd "$build"

# The names of the gates are given when the netlist is written as Verilog, so that is read again for the JSON.
yosys -q - <<'YOSYS'
read_verilog bit_sync.v byte_fifo.v uart_baud.v uart_echo.v uart_rx.v uart_tx.v watchdog.v
synth -top uart_echo
dfflibmap -liberty cells.lib
abc -liberty cells.lib
opt_clean -purge
write_verilog -noattr uart_gates.v
design -reset
read_verilog uart_gates.v
hierarchy -top uart_echo
setattr -unset src -unset module_not_derived *
setattr -mod -unset src -unset hdlname -unset cells_not_processed *
write_json uart_gates.json
YOSYS
# A module on a line instead of a bit on a line makes it a third of the size.
python3 - <<'PYTHON'
import json
netlist = json.load(open("uart_gates.json"))
with open("uart_gates.json", "w") as out:
    modules = (f'{json.dumps(name)}:{json.dumps(module, separators=(",", ":"))}'
               for name, module in netlist["modules"].items())
    print('{"creator":%s,"modules":{\n%s\n}}' % (json.dumps(netlist["creator"]), ",\n".join(modules)), file=out)
PYTHON
sed -i '1,2d' uart_gates.v  # who wrote it, and an empty line

sed 's/"uart.vcd"/"uart_gates.vcd"/' uart_tb.v >test_bench.v
iverilog -g2005 -s uart_tb -o gates.vvp test_bench.v uart_gates.v cells.v
vvp -n gates.vvp | tee log
if grep -q FAIL log || ! grep -q '^PASS: 12 bytes' log; then
  echo "make_netlist.sh: the test bench reports a failure, nothing is changed" >&2
  exit 1
fi
gzip -9n uart_gates.vcd
cat uart_gates.v >"$here/gates/uart_gates.v"
cat uart_gates.json >"$here/gates/uart_gates.json"
cat uart_gates.vcd.gz >"$here/gates/uart_gates.vcd.gz"
echo "wrote uart_gates.v, uart_gates.json and uart_gates.vcd.gz"
