# The headers that programs see. Programs name the entries; an entry brings with it whatever it includes, and nothing
# else of the house is installed.
set(ROSTER_PUBLIC_HEADERS
    # The plain functions, for C.
    api/roster.h
    # The words of the system, what it answers, and what it runs on.
    core/ZRConstants.h core/ZRFailure.h core/ZRLabels.h core/ZRMainQueue.h core/BuiltInProperties.h
    platform/files/Preferences.h platform/run/NeverDestroyed.h
    platform/text/Compare.h platform/text/Dates.h platform/text/Digits.h platform/text/Escape.h platform/text/Fold.h
    # The roster and its records.
    core/ZRAllGroup.h core/ZRGroup.h core/ZRLastImportGroup.h core/ZRMutableMultiValue.h core/ZRNameOrder.h
    core/ZRNicknameFormatter.h core/ZRPerson.h core/ZRUniqueId.h
    store/ZRChangeNotices.h store/ZRDBCache.h store/ZRIdsOfPeople.h store/ZRRoster.h store/ZRRosterStanding.h
    store/ZRSafeNotificationCenter.h store/ZRStoreFile.h
    # Searches and smart groups.
    search/ZRPeopleMatching.h search/ZRSearchElement.h search/ZRSearchElementConjunction.h
    search/ZRSearchElementHelper.h search/ZRSearchElementMatch.h search/ZRSmartGroup.h
    # Cards in and out, and as people read them.
    interchange/import/ImportPlan.h interchange/import/ZRvCardController.h interchange/vcard/VCard40.h
    interchange/vcard/ZRVCardParser.h interchange/vcard/prepare/CanonicalCard.h
    format/AddressDisplay.h format/ZRAddressFunctions.h format/ZRPhoneFormatter.h format/ZRPhoneNumberDisplay.h
    # Changes that can be undone, the same person twice, and what became of the roster.
    commands/ApplicationHost.h commands/ZRAddToGroupCommand.h commands/ZRChangePropertiesCommand.h
    commands/ZRChangePropertyCommand.h commands/ZRDeleteGroupsCommand.h commands/ZRDeleteRecordsCommand.h
    commands/ZREditSmartGroupCommand.h commands/ZRMeCommand.h commands/ZRNewGroupCommand.h
    commands/ZRNewPersonCommand.h commands/ZRNewSmartGroupCommand.h commands/ZRPasteGroupsCommand.h
    commands/ZRPastePeopleCommand.h commands/ZRRemoveFromGroupCommand.h commands/ZRRenameGroupCommand.h
    commands/ZRSetImageCommand.h commands/ZRShowAsCommand.h commands/ZRUndoManager.h
    merge/DuplicateMerge.h merge/ZRBestRecordFinder.h merge/ZRCardMergeController.h merge/ZRMergePeopleCommand.h
    merge/ZRNewDuplicateCardsController.h
    history/ZRHistory.h history/ZRHistoryStep.h
    app/ZRActionAddressCopyMailingLabel.h app/ZRChangeNotification.h)
