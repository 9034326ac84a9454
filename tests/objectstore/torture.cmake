# The tests that hurt the engine, apart from those that state its contracts.
roster_test(text_filter_test SOURCES TextFilterTest.cpp ROOMS objectstore LABELS objectstore slow)
roster_test(store_predicate_test SOURCES StorePredicateTest.cpp ROOMS objectstore LABELS objectstore)
foreach(test PredicateAgreement Differential Kill FaultyDisk)
    string(REGEX REPLACE "([a-z])([A-Z])" "\\1_\\2" name ${test})
    string(TOLOWER ${name} name)
    roster_test(${name}_test SOURCES ${test}Test.cpp ROOMS objectstore LIBRARIES SQLite::SQLite3
        LABELS objectstore slow)
endforeach()
