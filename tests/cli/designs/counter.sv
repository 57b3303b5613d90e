// A small design of what simulators dump in ways of their own: a generate block, a function, a task,
// a real, an array, an escaped name, a signal of several names, unknown values.
`timescale 1ns / 1ps
module counter #(parameter WIDTH = 4) (input wire clk, input wire clear, output reg [WIDTH-1:0] count);
  wire same_clk = clk;
  wire \odd.name = count[0];
  function [WIDTH-1:0] next(input [WIDTH-1:0] value);
    next = value + 1;
  endfunction
  always @(posedge same_clk) count <= clear ? 0 : next(count);
endmodule

module tb;
  reg clk = 0;
  reg clear = 1;
  real level = 0.5;
  reg [1:0] late;
  reg [7:0] store [0:1];
  wire [3:0] counts [0:1];
  genvar i;
  generate
    for (i = 0; i < 2; i = i + 1) begin : bank
      wire enable = clear ^ i[0];
      counter #(.WIDTH(4)) unit (.clk(clk), .clear(clear & enable), .count(counts[i]));
    end
  endgenerate
  task put(input [7:0] value);
    store[value[0]] = value;
  endtask
  always #5 clk = ~clk;
  always @(negedge clk) begin
    level = level + 0.25;
    put({4'd0, counts[1]});
  end
  initial begin
    $dumpfile("dump.vcd");
    $dumpvars(0, tb);
    #22 clear = 0;
    late = 2;
    #1000 $finish;
  end
endmodule
