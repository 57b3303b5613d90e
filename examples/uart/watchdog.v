// Watchdog: raises irq when kick stays away for 65535 clocks.
//
// Off unless enable is high. While it is off the counter rests at zero, so the
// block costs no switching power on boards that leave the strap low.

`timescale 1ns / 100ps
`default_nettype none

module watchdog (
  input  wire       clk,
  input  wire       rst_n,
  input  wire       enable,
  input  wire       kick,
  output wire [3:0] stage,   // how far the time has run, in sixteenths
  output reg        irq
);

  reg [15:0] count;

  assign stage = count[15:12];

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      count <= 16'd0;
      irq   <= 1'b0;
    end else if (!enable) begin
      count <= 16'd0;
      irq   <= 1'b0;
    end else if (kick)
      count <= 16'd0;
    else if (count == 16'hffff)
      irq <= 1'b1;
    else
      count <= count + 16'd1;

endmodule

`default_nettype wire
