// The gates and flip-flops of cells.lib as the simulator needs them. Gates take no time; a flip-flop takes
// 100 ps, so that no register sees what another one takes at the same edge of the clock.

`timescale 1ns / 100ps

module INV (input A, output Y);
  assign Y = ~A;
endmodule

module BUF (input A, output Y);
  assign Y = A;
endmodule

module NAND2 (input A, input B, output Y);
  assign Y = ~(A & B);
endmodule

module NOR2 (input A, input B, output Y);
  assign Y = ~(A | B);
endmodule

module XOR2 (input A, input B, output Y);
  assign Y = A ^ B;
endmodule

module AOI21 (input A, input B, input C, output Y);
  assign Y = ~((A & B) | C);
endmodule

module OAI21 (input A, input B, input C, output Y);
  assign Y = ~((A | B) & C);
endmodule

module DFF (input C, input D, output reg Q);
  always @(posedge C) Q <= #0.1 D;
endmodule

module DFFR (input C, input D, input R, output reg Q);
  always @(posedge C or negedge R)
    if (!R) Q <= 1'b0;
    else Q <= #0.1 D;
endmodule
