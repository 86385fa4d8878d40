# The shipped variants: each is the same object files with other seams.

j4_add_library(j4tavla64_virtual j4_loader_seam j4_virtual_seams j4bench)

# What is shipped: cmake --install BUILD --component out --prefix out
install(TARGETS j4tavla64_virtual j4bench sorvane64
    RUNTIME DESTINATION ${out_folder}/virtual COMPONENT out
    LIBRARY DESTINATION ${out_folder}/virtual COMPONENT out
    ARCHIVE DESTINATION ${out_folder}/virtual COMPONENT out)
install(FILES c_sdk/include/j4tavla.h DESTINATION include COMPONENT out)
