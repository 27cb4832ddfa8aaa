"""What bench/compare is made of."""
