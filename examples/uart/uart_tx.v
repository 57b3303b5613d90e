// Serial transmitter: 8 data bits, no parity, 1 stop bit, least bit first.
//
// start is looked at only while busy is low; data must hold in that clock. The
// start bit begins with the next tick, so the line is always in step with the
// divider. busy falls with the end of the stop bit.

`timescale 1ns / 100ps
`default_nettype none

module uart_tx (
  input  wire       clk,
  input  wire       rst_n,
  input  wire       tick,
  input  wire       start,
  input  wire [7:0] data,
  output reg        txd,
  output reg        busy
);

  reg [3:0] tick_cnt;   // ticks left of the current bit
  reg [3:0] bit_cnt;    // bits not yet on the line
  reg [9:0] shift;      // stop bit, data, start bit

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      txd      <= 1'b1;
      busy     <= 1'b0;
      tick_cnt <= 4'd0;
      bit_cnt  <= 4'd0;
      shift    <= 10'h3ff;
    end else if (!busy) begin
      if (start) begin
        busy     <= 1'b1;
        tick_cnt <= 4'd0;
        bit_cnt  <= 4'd10;
        shift    <= {1'b1, data, 1'b0};
      end
    end else if (tick) begin
      if (tick_cnt != 4'd0)
        tick_cnt <= tick_cnt - 4'd1;
      else if (bit_cnt == 4'd0)
        busy <= 1'b0;
      else begin
        txd      <= shift[0];
        shift    <= {1'b1, shift[9:1]};
        bit_cnt  <= bit_cnt - 4'd1;
        tick_cnt <= 4'd9;
      end
    end

endmodule

`default_nettype wire
