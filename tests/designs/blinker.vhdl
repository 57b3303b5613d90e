-- A counter in a generate statement, with a weak and a real signal.
library ieee;
use ieee.std_logic_1164.all;
use ieee.numeric_std.all;

entity tb is
end tb;

architecture test of tb is
  signal clk : std_logic := '0';
  signal pulled : std_logic := 'H';
  signal level : real := 0.0;
  signal done : boolean := false;
  signal number : integer := 0;
begin
  clk <= not clk after 5 ns when not done;
  pulled <= 'L' after 30 ns, 'H' after 60 ns, '0' after 90 ns;

  banks : for i in 0 to 1 generate
    signal count : unsigned(3 downto 0) := (others => '0');
  begin
    process (clk)
    begin
      if rising_edge(clk) then
        count <= count + 1 + i;
      end if;
    end process;
  end generate;

  process
  begin
    for step in 1 to 50 loop
      wait for 7 ns;
      number <= step;
      level <= level + 0.5;
    end loop;
    done <= true;
    wait;
  end process;
end test;
