#!/usr/bin/env bash
# Simulates the UART echo with Icarus Verilog and writes uart.vcd beside this
# script. Runs from any directory; a failed check leaves the old dump in place.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

for tool in iverilog vvp; do
  if ! command -v "$tool" >/dev/null; then
    echo "make_dump.sh: $tool not found; install Icarus Verilog (package iverilog)" >&2
    exit 1
  fi
done

build=$(mktemp -d)
trap 'rm -rf "$build"' EXIT

iverilog -Wall -g2005 -s uart_tb -o "$build/uart_tb.vvp" "$here"/*.v

# The test bench writes uart.vcd into the directory it runs in.
(cd "$build" && vvp -n uart_tb.vvp) | tee "$build/log"

if grep -q FAIL "$build/log" || ! grep -q '^PASS: 12 bytes' "$build/log"; then
  echo "make_dump.sh: the test bench reports a failure, uart.vcd is unchanged" >&2
  exit 1
fi

cat "$build/uart.vcd" >"$here/uart.vcd"
echo "wrote uart.vcd, $(wc -c <"$here/uart.vcd") bytes"
