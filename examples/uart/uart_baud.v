// Baud-rate divider shared by the receiver and the transmitter.
//
// tick is one clock wide and comes every (divisor + 1) clocks. Ten ticks make
// one bit. bit_clk is a square wave with one period per bit; it goes to a test
// point only, as the trigger for a scope, and clocks nothing in here.
//
//   50 MHz, divisor 4:  tick 10 MHz, bit_clk 1 MHz, 1 Mbaud

`timescale 1ns / 100ps
`default_nettype none

module uart_baud (
  input  wire       clk,
  input  wire       rst_n,
  input  wire [7:0] divisor,
  output reg        tick,
  output reg        bit_clk
);

  reg [7:0] count;   // clocks left until the next tick
  reg [2:0] phase;   // ticks since bit_clk last changed, 0 to 4

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      count <= 8'd0;
      tick  <= 1'b0;
    end else if (count == 8'd0) begin
      count <= divisor;
      tick  <= 1'b1;
    end else begin
      count <= count - 8'd1;
      tick  <= 1'b0;
    end

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      phase   <= 3'd0;
      bit_clk <= 1'b0;
    end else if (tick) begin
      if (phase == 3'd4) begin
        phase   <= 3'd0;
        bit_clk <= ~bit_clk;
      end else
        phase <= phase + 3'd1;
    end

endmodule

`default_nettype wire
