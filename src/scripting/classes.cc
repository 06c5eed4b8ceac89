// placeholder: the helper classes come here
