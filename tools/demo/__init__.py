"""./dev demo: plays the bundled scene natively and scaled."""
