// FIFO of 16 bytes, one clock, read data registered.
//
// rd_data is valid in the clock after rd. A write to a full FIFO is dropped and
// sets overrun, which stays until reset; a read of an empty one does nothing.

`timescale 1ns / 100ps
`default_nettype none

module byte_fifo (
  input  wire       clk,
  input  wire       rst_n,
  input  wire       wr,
  input  wire [7:0] wr_data,
  input  wire       rd,
  output reg  [7:0] rd_data,
  output wire       empty,
  output wire       full,
  output reg  [4:0] level,
  output reg        overrun
);

  reg [7:0] mem [0:15];
  reg [3:0] wr_ptr;
  reg [3:0] rd_ptr;

  assign empty = (level == 5'd0);
  assign full  = level[4];

  wire push = wr & ~full;
  wire pop  = rd & ~empty;

  // No reset here, so that the array fits a block of RAM.
  always @(posedge clk)
    if (push)
      mem[wr_ptr] <= wr_data;

  always @(posedge clk or negedge rst_n)
    if (!rst_n)
      rd_data <= 8'h00;
    else if (pop)
      rd_data <= mem[rd_ptr];

  always @(posedge clk or negedge rst_n)
    if (!rst_n) begin
      wr_ptr  <= 4'd0;
      rd_ptr  <= 4'd0;
      level   <= 5'd0;
      overrun <= 1'b0;
    end else begin
      if (push)
        wr_ptr <= wr_ptr + 4'd1;
      if (pop)
        rd_ptr <= rd_ptr + 4'd1;
      if (push & ~pop)
        level <= level + 5'd1;
      if (pop & ~push)
        level <= level - 5'd1;
      if (wr & full)
        overrun <= 1'b1;
    end

endmodule

`default_nettype wire
