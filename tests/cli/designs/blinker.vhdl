-- A counter in a generate statement, with a weak, a real and an integer signal.
library ieee;
use ieee.std_logic_1164.all;
use ieee.numeric_std.all;

entity tb is
end tb;

architecture test of tb is
  signal clk : std_logic := '0';
  signal pulled : std_logic := 'H';
  signal level : real := 0.0;
  signal number : integer := 0;
begin
  clk <= not clk after 5 ns when now < 350 ns;
  pulled <= 'L' after 30 ns, 'H' after 60 ns, '0' after 90 ns;
  number <= number + 1 after 7 ns when now < 350 ns;
  level <= 0.5 * real(number);

  banks : for i in 0 to 1 generate
    signal count : unsigned(3 downto 0) := (others => '0');
  begin
    count <= count + 1 + i when rising_edge(clk);
  end generate;
end test;
