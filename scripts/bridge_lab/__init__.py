"""Real bridges in network namespaces: what ./run --live shows, and what the tests of real bridges compare with."""
