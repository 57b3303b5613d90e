// Two flip-flops that bring one asynchronous input into the clock domain.
//
// The line idles high (serial data, active-low handshake), so reset sets both
// stages to 1: a released reset must not look like a start bit.

`timescale 1ns / 100ps
`default_nettype none

module bit_sync (
  input  wire clk,
  input  wire rst_n,
  input  wire d,
  output reg  q
);

  reg meta;   // may go metastable; nothing but q may read it

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      meta <= 1'b1;
      q    <= 1'b1;
    end else begin
      meta <= d;
      q    <= meta;
    end

endmodule

`default_nettype wire
