// Serial receiver: 8 data bits, no parity, 1 stop bit, least bit first.
//
// The start bit is checked again half a bit after its falling edge; from there
// on each bit is taken one bit time later, that is in its middle. valid is one
// clock wide and means that data holds a byte with a good stop bit. A low stop
// bit sets frame_err, which stays until reset, and drops the byte.

`timescale 1ns / 100ps
`default_nettype none

module uart_rx (
  input  wire       clk,
  input  wire       rst_n,
  input  wire       tick,
  input  wire       rxd,
  output reg  [7:0] data,
  output reg        valid,
  output reg        frame_err
);

  wire      line;       // rxd in our clock domain
  reg       active;     // a byte is under way
  reg [3:0] tick_cnt;   // ticks left until the next sample
  reg       sample;     // one clock: take the line now
  reg [3:0] bit_cnt;    // 0 start bit, 1 to 8 data, 9 stop bit
  reg [7:0] shift;

  bit_sync sync (
    .clk   (clk),
    .rst_n (rst_n),
    .d     (rxd),
    .q     (line)
  );

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      tick_cnt <= 4'd0;
      sample   <= 1'b0;
    end else begin
      sample <= active & tick & (tick_cnt == 4'd0);
      if (!active)
        tick_cnt <= 4'd4;           // to the middle of the start bit
      else if (tick)
        tick_cnt <= (tick_cnt == 4'd0) ? 4'd9 : tick_cnt - 4'd1;
    end

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      active  <= 1'b0;
      bit_cnt <= 4'd0;
    end else if (!active) begin
      active  <= ~line;
      bit_cnt <= 4'd0;
    end else if (sample) begin
      bit_cnt <= bit_cnt + 4'd1;
      if (bit_cnt == 4'd0 && line)  // a glitch, no start bit
        active <= 1'b0;
      if (bit_cnt == 4'd9)
        active <= 1'b0;
    end

  always @(posedge clk or negedge rst_n)
    if (!rst_n)
      shift <= 8'h00;
    else if (sample && bit_cnt >= 4'd1 && bit_cnt <= 4'd8)
      shift <= {line, shift[7:1]};

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      data      <= 8'h00;
      valid     <= 1'b0;
      frame_err <= 1'b0;
    end else begin
      valid <= 1'b0;
      if (sample && bit_cnt == 4'd9) begin
        if (line) begin
          data  <= shift;
          valid <= 1'b1;
        end else
          frame_err <= 1'b1;
      end
    end

endmodule

`default_nettype wire
