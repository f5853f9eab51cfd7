-- The reference data of the demo, for the tables of modules/reference-schema.sql; for SQLite and
-- PostgreSQL.
--
-- A family (accounts 1001 to 1003), a company with three travelling employees (1010 to 1013), a
-- prepaid customer (1020), a student (1030), a sports club that shares a discount with its members
-- (1050), and the former customer of the student's phone number (1060). Numbers are told apart by
-- their thousands: 1 accounts, 2 balance groups, 3 services, 4 owner groups, 5 discounts,
-- 6 sponsorships, 7 products.
--
-- On purpose, three things don't fit the EDRs, so that the dump shows what the modules say then and
-- "datadump findings" has something to find:
--   account 1040, a meter that was activated on the day of the EDRs, after this was filled: neither
--       its subscriber number 001010000000040 nor its balance group 2040 is known;
--   price model PM_CNT_ADVENT, of a campaign that rating knew before the reference data did, isn't
--       here;
--   discount 5011, CORP_DATA20 of the company, ended with October, and rating still granted it.

---------------------------------------------------------------------------------------------------
-- The framework
---------------------------------------------------------------------------------------------------

INSERT INTO KWL_PIPELINE (PIPELINE, EDRC_DESC) VALUES
    ('Main', 'RATED_EVENTS'),
    ('Archive', 'ARCHIVED_EVENTS');

INSERT INTO KWL_EDRC_FIELD (FIELD_ID, FIELD_NAME) VALUES
    (1, 'DETAIL.A_NUMBER'),
    (2, 'DETAIL.B_NUMBER'),
    (3, 'DETAIL.IMSI'),
    (4, 'DETAIL.USER_NAME');

-- MMS has an entry for another pipeline's EDRs only, and VMS none for the customer: the plug-in
-- captures neither.
INSERT INTO KWL_ALIAS_MAP (KEY_ID, REFERENCE, EDRC_DESC, FIELD_ID) VALUES
    ('TEL', 'Account_CustA', 'RATED_EVENTS', 1),
    ('TEL', 'Account_CustB', 'RATED_EVENTS', 2),
    ('TEL', 'Zone_CustB', 'RATED_EVENTS', 2),
    ('SMS', 'UniData_CustA', 'RATED_EVENTS', 1),
    ('SMS', 'UniData_CustB', 'RATED_EVENTS', 2),
    ('GPRS', 'Account_CustA', 'RATED_EVENTS', 3),
    ('GPRS', 'UniData_CustA', 'RATED_EVENTS', 3),
    ('CNT', 'Account_CustA', 'RATED_EVENTS', 4),
    ('VMS', 'Account_CustB', 'RATED_EVENTS', 2),
    ('TEL', 'Account_CustA', 'ARCHIVED_EVENTS', 3),
    ('MMS', 'Account_CustA', 'ARCHIVED_EVENTS', 1);

---------------------------------------------------------------------------------------------------
-- Accounts
---------------------------------------------------------------------------------------------------

INSERT INTO ACCOUNT (ACCOUNT_ID, STATUS, CURRENCY, PARENT_ID) VALUES
    (1001, 'ACTIVE', 'EUR', NULL),
    (1002, 'ACTIVE', 'EUR', 1001),
    (1003, 'ACTIVE', 'EUR', 1001),
    (1010, 'ACTIVE', 'EUR', NULL),
    (1011, 'ACTIVE', 'EUR', 1010),
    (1012, 'ACTIVE', 'EUR', 1010),
    (1013, 'ACTIVE', 'EUR', 1010),
    (1020, 'ACTIVE', 'EUR', NULL),
    (1030, 'ACTIVE', 'EUR', NULL),
    (1050, 'ACTIVE', 'EUR', NULL),
    (1060, 'CLOSED', 'EUR', NULL);

INSERT INTO CUSTOMER_IDENTIFIER (IDENTIFIER, ACCOUNT_ID) VALUES
    ('491713920001', 1001), ('001010000000001', 1001), ('lindenhof', 1001),
    ('491713920002', 1002), ('001010000000002', 1002),
    ('491713920003', 1003), ('001010000000003', 1003),
    ('493023125000', 1010),
    ('491713920011', 1011), ('001010000000011', 1011),
    ('491713920012', 1012), ('001010000000012', 1012),
    ('491713920013', 1013), ('001010000000013', 1013),
    ('491713920020', 1020), ('001010000000020', 1020),
    ('491713920030', 1030), ('001010000000030', 1030), ('nachteule', 1030),
    ('001010000000060', 1060);

INSERT INTO ACCOUNT_SERVICE (ACCOUNT_ID, SERVICE_ID, SERVICE_TYPE, LOGIN, STATUS) VALUES
    (1001, 3001, '/service/telco', '491713920001', 'ACTIVE'),
    (1001, 3101, '/service/message', '491713920001', 'ACTIVE'),
    (1001, 3201, '/service/data', '001010000000001', 'ACTIVE'),
    (1001, 3301, '/service/content', 'lindenhof', 'ACTIVE'),
    (1002, 3002, '/service/telco', '491713920002', 'ACTIVE'),
    (1002, 3102, '/service/message', '491713920002', 'ACTIVE'),
    (1002, 3202, '/service/data', '001010000000002', 'ACTIVE'),
    (1003, 3003, '/service/telco', '491713920003', 'ACTIVE'),
    (1003, 3103, '/service/message', '491713920003', 'ACTIVE'),
    (1010, 3010, '/service/telco', '493023125000', 'ACTIVE'),
    (1011, 3011, '/service/telco', '491713920011', 'ACTIVE'),
    (1011, 3111, '/service/message', '491713920011', 'ACTIVE'),
    (1011, 3211, '/service/data', '001010000000011', 'ACTIVE'),
    (1012, 3012, '/service/telco', '491713920012', 'ACTIVE'),
    (1012, 3112, '/service/message', '491713920012', 'ACTIVE'),
    (1012, 3212, '/service/data', '001010000000012', 'ACTIVE'),
    (1013, 3013, '/service/telco', '491713920013', 'ACTIVE'),
    (1013, 3113, '/service/message', '491713920013', 'ACTIVE'),
    (1013, 3213, '/service/data', '001010000000013', 'ACTIVE'),
    (1020, 3020, '/service/telco', '491713920020', 'ACTIVE'),
    (1020, 3120, '/service/message', '491713920020', 'ACTIVE'),
    (1030, 3030, '/service/telco', '491713920030', 'ACTIVE'),
    (1030, 3130, '/service/message', '491713920030', 'ACTIVE'),
    (1030, 3230, '/service/data', '001010000000030', 'ACTIVE'),
    (1030, 3330, '/service/content', 'nachteule', 'ACTIVE'),
    (1060, 3060, '/service/telco', NULL, 'CLOSED'),
    (1060, 3160, '/service/message', NULL, 'CLOSED'),
    (1060, 3260, '/service/data', '001010000000060', 'CLOSED');

INSERT INTO ACCOUNT_PRODUCT
    (ACCOUNT_ID, PRODUCT_ID, RATEPLAN_CODE, SERVICE_ID, EVENT_TYPE, STATUS, VALID_FROM, VALID_TO)
VALUES
    (1001, 7001, 'VOICE_STD', 3001, '/event/session/telco', 'ACTIVE', '2021-04-01T00:00:00Z', NULL),
    (1001, 7101, 'SMS_STD', 3101, '/event/message/sms', 'ACTIVE', '2021-04-01T00:00:00Z', NULL),
    (1001, 7201, 'DATA_FLEX', 3201, '/event/session/data', 'ACTIVE', '2021-04-01T00:00:00Z', NULL),
    (1001, 7301, 'CNT_STD', 3301, '*', 'ACTIVE', '2021-04-01T00:00:00Z', NULL),
    (1002, 7002, 'VOICE_STD', 3002, '/event/session/telco', 'ACTIVE', '2021-04-01T00:00:00Z', NULL),
    (1002, 7102, 'SMS_STD', 3102, '/event/message/sms', 'ACTIVE', '2021-04-01T00:00:00Z', NULL),
    (1002, 7202, 'DATA_FLEX', 3202, '/event/session/data', 'ACTIVE', '2021-04-01T00:00:00Z', NULL),
    (1003, 7003, 'VOICE_STD', 3003, '/event/session/telco', 'ACTIVE', '2025-09-12T00:00:00Z', NULL),
    (1003, 7103, 'SMS_STD', 3103, '/event/message/sms', 'ACTIVE', '2025-09-12T00:00:00Z', NULL),
    (1010, 7010, 'VOICE_BIZ', 3010, '/event/session/telco', 'ACTIVE', '2018-01-15T00:00:00Z', NULL),
    (1011, 7011, 'VOICE_BIZ', 3011, '/event/session/telco', 'ACTIVE', '2023-03-01T00:00:00Z', NULL),
    (1011, 7111, 'SMS_BIZ', 3111, '/event/message/sms', 'ACTIVE', '2023-03-01T00:00:00Z', NULL),
    (1011, 7211, 'DATA_BIZ', 3211, '/event/session/data', 'ACTIVE', '2023-03-01T00:00:00Z', NULL),
    (1012, 7012, 'VOICE_BIZ', 3012, '/event/session/telco', 'ACTIVE', '2023-03-01T00:00:00Z', NULL),
    (1012, 7112, 'SMS_BIZ', 3112, '/event/message/sms', 'ACTIVE', '2023-03-01T00:00:00Z', NULL),
    (1012, 7212, 'DATA_BIZ', 3212, '/event/session/data', 'ACTIVE', '2023-03-01T00:00:00Z', NULL),
    (1013, 7013, 'VOICE_BIZ', 3013, '/event/session/telco', 'ACTIVE', '2024-08-15T00:00:00Z', NULL),
    (1013, 7113, 'SMS_BIZ', 3113, '/event/message/sms', 'ACTIVE', '2024-08-15T00:00:00Z', NULL),
    (1013, 7213, 'DATA_BIZ', 3213, '/event/session/data', 'ACTIVE', '2024-08-15T00:00:00Z', NULL),
    (1020, 7020, 'VOICE_PRE', 3020, '/event/session/telco', 'ACTIVE', '2026-01-05T00:00:00Z', NULL),
    (1020, 7120, 'SMS_STD', 3120, '/event/message', 'ACTIVE', '2026-01-05T00:00:00Z', NULL),
    (1030, 7030, 'VOICE_STD', 3030, '/event/session/telco', 'ACTIVE', '2026-10-01T00:00:00Z', NULL),
    (1030, 7130, 'SMS_STD', 3130, '/event/message/sms', 'ACTIVE', '2026-10-01T00:00:00Z', NULL),
    (1030, 7230, 'DATA_FLEX', 3230, '/event/session/data', 'ACTIVE', '2026-10-01T00:00:00Z', NULL),
    (1030, 7330, 'CNT_STD', 3330, '*', 'ACTIVE', '2026-10-01T00:00:00Z', NULL),
    (1060, 7060, 'VOICE_STD', 3060, '*', 'CLOSED', '2022-06-01T00:00:00Z', '2026-10-01T00:00:00Z');

INSERT INTO ACCOUNT_DISCOUNT
    (ACCOUNT_ID, DISCOUNT_ID, MODEL_NAME, SERVICE_ID, EVENT_TYPE, STATUS, VALID_FROM, VALID_TO)
VALUES
    (1001, 5001, 'FAMILY10', NULL, '*', 'ACTIVE', '2021-04-01T00:00:00Z', NULL),
    (1001, 5002, 'LOYALTY5', NULL, '*', 'ACTIVE', '2024-04-01T00:00:00Z', NULL),
    (1010, 5010, 'CORP_VOICE15', NULL, '/event/session/telco', 'ACTIVE', '2023-03-01T00:00:00Z', NULL),
    (1010, 5011, 'CORP_DATA20', NULL, '/event/session/data', 'ACTIVE', '2023-03-01T00:00:00Z', '2026-11-01T00:00:00Z'),
    (1011, 5040, 'DATA_PACK_2GB', 3211, '/event/session/data', 'ACTIVE', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (1020, 5020, 'PREPAID_NIGHT', 3020, '/event/session/telco', 'ACTIVE', '2026-01-05T00:00:00Z', NULL),
    (1020, 5021, 'WEEKEND_FREE', NULL, '*', 'ACTIVE', '2026-07-01T00:00:00Z', '2027-01-01T00:00:00Z'),
    (1030, 5030, 'STUDENT25', NULL, '*', 'ACTIVE', '2026-10-01T00:00:00Z', '2028-10-01T00:00:00Z'),
    (1050, 5050, 'CLUB_SMS', NULL, '/event/message', 'ACTIVE', '2022-01-10T00:00:00Z', NULL),
    (1060, 5060, 'WELCOME50', NULL, '*', 'CLOSED', '2022-06-01T00:00:00Z', '2026-10-01T00:00:00Z');

---------------------------------------------------------------------------------------------------
-- Rate plans
---------------------------------------------------------------------------------------------------

-- VOICE_STD and DATA_FLEX also have the version before, which was in force until it was replaced.
INSERT INTO RATEPLAN (RATEPLAN_CODE, VERSION, RATEPLAN_ID, MODEL, VALID_FROM, VALID_TO) VALUES
    ('VOICE_STD', 2, 12, 'FLAT', '2022-01-01T00:00:00Z', '2025-01-01T00:00:00Z'),
    ('VOICE_STD', 3, 12, 'FLAT', '2025-01-01T00:00:00Z', NULL),
    ('VOICE_BIZ', 2, 14, 'FLAT', '2023-03-01T00:00:00Z', NULL),
    ('VOICE_PRE', 1, 16, 'FLAT', '2025-07-01T00:00:00Z', NULL),
    ('SMS_STD', 2, 21, 'FLAT', '2024-01-01T00:00:00Z', NULL),
    ('SMS_BIZ', 1, 22, 'FLAT', '2023-03-01T00:00:00Z', NULL),
    ('MMS_STD', 1, 23, 'FLAT', '2022-01-01T00:00:00Z', NULL),
    ('DATA_FLEX', 4, 31, 'TIERED', '2024-01-01T00:00:00Z', '2026-07-01T00:00:00Z'),
    ('DATA_FLEX', 5, 31, 'TIERED', '2026-07-01T00:00:00Z', NULL),
    ('DATA_BIZ', 2, 33, 'FLAT', '2023-03-01T00:00:00Z', NULL),
    ('DATA_METER', 1, 35, 'FLAT', '2026-09-01T00:00:00Z', NULL),
    ('CNT_STD', 1, 41, 'FLAT', '2021-01-01T00:00:00Z', NULL),
    ('CNT_DEALER', 1, 45, 'FLAT', '2021-01-01T00:00:00Z', NULL),
    ('W_ROAM_VOICE', 4, 91, 'FLAT', '2026-01-01T00:00:00Z', '2027-01-01T00:00:00Z'),
    ('W_ROAM_DATA', 4, 92, 'FLAT', '2026-01-01T00:00:00Z', '2027-01-01T00:00:00Z'),
    ('X_SETTLE', 1, 99, 'FLAT', '2020-01-01T00:00:00Z', NULL);

INSERT INTO RATEPLAN_ENTRY
    (RATEPLAN_CODE, VERSION, ENTRY_NO, SERVICE_CODE, SERVICE_CLASS, IMPACT_CATEGORY, PRICEMODEL_CODE)
VALUES
    ('VOICE_STD', 2, 1, 'TEL', '*', '*', 'PM_VOICE_NAT'),
    ('VOICE_STD', 3, 1, 'TEL', '*', 'ONNET', 'PM_VOICE_ONNET'),
    ('VOICE_STD', 3, 2, 'TEL', '*', 'DOMESTIC', 'PM_VOICE_NAT'),
    ('VOICE_BIZ', 2, 1, 'TEL', 'BIZ', 'DOMESTIC', 'PM_VOICE_BIZ'),
    ('VOICE_BIZ', 2, 2, 'TEL', 'BIZ', 'ROAM_Z2', 'PM_VOICE_ROAM_Z2'),
    ('VOICE_BIZ', 2, 3, 'TEL', 'BIZ', 'ROAM_Z3', 'PM_VOICE_ROAM_Z3'),
    ('VOICE_PRE', 1, 1, 'TEL', 'PRE', '*', 'PM_VOICE_SETUP'),
    ('VOICE_PRE', 1, 2, 'TEL', 'PRE', 'ONNET', 'PM_VOICE_ONNET'),
    ('VOICE_PRE', 1, 3, 'TEL', 'PRE', 'DOMESTIC', 'PM_VOICE_PRE'),
    ('SMS_STD', 2, 1, 'SMS', '*', 'DOMESTIC', 'PM_SMS_NAT'),
    ('SMS_STD', 2, 2, 'SMS', '*', 'INTERNATIONAL', 'PM_SMS_INT'),
    ('SMS_BIZ', 1, 1, 'SMS', 'BIZ', 'DOMESTIC', 'PM_SMS_NAT'),
    ('SMS_BIZ', 1, 2, 'SMS', 'BIZ', 'ROAM_Z3', 'PM_SMS_BIZ_ROAM'),
    ('MMS_STD', 1, 1, 'MMS', '*', '*', 'PM_MMS'),
    ('DATA_FLEX', 4, 1, 'GPRS', '*', '*', 'PM_DATA_MB'),
    ('DATA_FLEX', 5, 1, 'GPRS', '*', 'DOMESTIC', 'PM_DATA_DAYFEE'),
    ('DATA_FLEX', 5, 2, 'GPRS', '*', 'DOMESTIC', 'PM_DATA_MB'),
    ('DATA_BIZ', 2, 1, 'GPRS', 'BIZ', 'ROAM_Z2', 'PM_DATA_ROAM_Z2'),
    ('DATA_BIZ', 2, 2, 'GPRS', 'BIZ', 'ROAM_Z3', 'PM_DATA_ROAM_Z3'),
    ('DATA_BIZ', 2, 3, 'GPRS', 'BIZ', '*', 'PM_DATA_MB'),
    ('DATA_METER', 1, 1, 'GPRS', 'M2M', '*', 'PM_METER_KB'),
    ('CNT_STD', 1, 1, 'CNT', '*', 'FILM', 'PM_CNT_FILM'),
    ('CNT_STD', 1, 2, 'CNT', '*', 'FILM', 'PM_CNT_HD'),
    ('CNT_STD', 1, 3, 'CNT', '*', 'MUSIC', 'PM_CNT_SONG'),
    ('CNT_DEALER', 1, 1, 'CNT', '*', 'FILM', 'PM_CNT_DEALER'),
    ('W_ROAM_VOICE', 4, 1, 'TEL', '*', 'ROAM_Z2', 'PM_W_VOICE'),
    ('W_ROAM_VOICE', 4, 2, 'TEL', '*', 'ROAM_Z3', 'PM_W_VOICE'),
    ('W_ROAM_DATA', 4, 1, 'GPRS', '*', 'ROAM_Z2', 'PM_W_DATA'),
    ('W_ROAM_DATA', 4, 2, 'GPRS', '*', 'ROAM_Z3', 'PM_W_DATA'),
    ('X_SETTLE', 1, 1, '*', '*', '*', 'PM_SETTLE');

---------------------------------------------------------------------------------------------------
-- Price models
---------------------------------------------------------------------------------------------------

INSERT INTO PRICEMODEL (PRICEMODEL_CODE, DESCRIPTION, CURRENCY) VALUES
    ('PM_VOICE_NAT', 'Call to a domestic number', 'EUR'),
    ('PM_VOICE_ONNET', 'Call within the network', 'EUR'),
    ('PM_VOICE_BIZ', 'Business call to a domestic number', 'EUR'),
    ('PM_VOICE_PRE', 'Prepaid call to a domestic number', 'EUR'),
    ('PM_VOICE_SETUP', 'Set-up of a call', 'EUR'),
    ('PM_VOICE_ROAM_Z2', 'Call from zone 2', 'EUR'),
    ('PM_VOICE_ROAM_Z3', 'Call from zone 3', 'EUR'),
    ('PM_SMS_NAT', 'Message to a domestic number', 'EUR'),
    ('PM_SMS_INT', 'Message to a number abroad', 'EUR'),
    ('PM_SMS_BIZ_ROAM', 'Business message from abroad', 'EUR'),
    ('PM_MMS', 'Picture message', 'EUR'),
    ('PM_DATA_MB', 'Data by volume, cheaper above 500 MB', 'EUR'),
    ('PM_DATA_DAYFEE', 'Daily fee, at the first use of a day', 'EUR'),
    ('PM_DATA_ROAM_Z2', 'Data in zone 2', 'EUR'),
    ('PM_DATA_ROAM_Z3', 'Data in zone 3', 'EUR'),
    ('PM_METER_KB', 'Data of meters', 'EUR'),
    ('PM_CNT_FILM', 'Film', 'EUR'),
    ('PM_CNT_HD', 'Surcharge for high definition', 'EUR'),
    ('PM_CNT_SONG', 'Song', 'EUR'),
    ('PM_CNT_DEALER', 'Share of the dealer', 'EUR'),
    ('PM_W_VOICE', 'Paid to the roaming partner for calls', 'EUR'),
    ('PM_W_DATA', 'Paid to the roaming partner for data', 'EUR'),
    ('PM_SETTLE', NULL, 'EUR');

INSERT INTO PRICEMODEL_STEP
    (PRICEMODEL_CODE, STEP_NO, UNIT, THRESHOLD_FROM, THRESHOLD_TO, AMOUNT, PER_QUANTITY, VALID_FROM, VALID_TO)
VALUES
    ('PM_VOICE_NAT', 1, 'second', '0', NULL, '0.10', '60', '2022-01-01T00:00:00Z', '2025-01-01T00:00:00Z'),
    ('PM_VOICE_NAT', 2, 'second', '0', NULL, '0.09', '60', '2025-01-01T00:00:00Z', NULL),
    ('PM_VOICE_ONNET', 1, 'second', '0', NULL, '0.05', '60', '2022-01-01T00:00:00Z', NULL),
    ('PM_VOICE_BIZ', 1, 'second', '0', NULL, '0.06', '60', '2023-03-01T00:00:00Z', NULL),
    ('PM_VOICE_PRE', 1, 'second', '0', NULL, '0.12', '60', '2025-07-01T00:00:00Z', NULL),
    ('PM_VOICE_SETUP', 1, 'call', '0', NULL, '0.05', '1', '2025-07-01T00:00:00Z', NULL),
    ('PM_VOICE_ROAM_Z2', 1, 'second', '0', NULL, '0.49', '60', '2024-01-01T00:00:00Z', NULL),
    ('PM_VOICE_ROAM_Z3', 1, 'second', '0', NULL, '0.89', '60', '2024-01-01T00:00:00Z', NULL),
    ('PM_SMS_NAT', 1, 'message', '0', NULL, '0.09', '1', '2024-01-01T00:00:00Z', NULL),
    ('PM_SMS_INT', 1, 'message', '0', NULL, '0.19', '1', '2024-01-01T00:00:00Z', NULL),
    ('PM_SMS_BIZ_ROAM', 1, 'message', '0', NULL, '0.29', '1', '2024-01-01T00:00:00Z', NULL),
    ('PM_MMS', 1, 'message', '0', NULL, '0.39', '1', '2022-01-01T00:00:00Z', NULL),
    ('PM_DATA_MB', 1, 'byte', '0', '524288000', '0.02', '1048576', '2024-01-01T00:00:00Z', NULL),
    ('PM_DATA_MB', 2, 'byte', '524288000', NULL, '0.01', '1048576', '2024-01-01T00:00:00Z', NULL),
    ('PM_DATA_DAYFEE', 1, 'day', '0', NULL, '0.50', '1', '2026-07-01T00:00:00Z', NULL),
    ('PM_DATA_ROAM_Z2', 1, 'byte', '0', NULL, '0.35', '1048576', '2024-01-01T00:00:00Z', NULL),
    ('PM_DATA_ROAM_Z3', 1, 'byte', '0', NULL, '0.75', '1048576', '2024-01-01T00:00:00Z', NULL),
    ('PM_METER_KB', 1, 'byte', '0', NULL, '0.004', '1024', '2026-09-01T00:00:00Z', NULL),
    ('PM_CNT_FILM', 1, 'item', '0', NULL, '3.99', '1', '2021-01-01T00:00:00Z', NULL),
    ('PM_CNT_HD', 1, 'item', '0', NULL, '1.00', '1', '2021-01-01T00:00:00Z', NULL),
    ('PM_CNT_SONG', 1, 'item', '0', NULL, '0.99', '1', '2021-01-01T00:00:00Z', NULL),
    ('PM_CNT_DEALER', 1, 'item', '0', NULL, '0.12', '1', '2021-01-01T00:00:00Z', NULL),
    ('PM_W_VOICE', 1, 'second', '0', NULL, '0.21', '60', '2026-01-01T00:00:00Z', '2027-01-01T00:00:00Z'),
    ('PM_W_DATA', 1, 'byte', '0', NULL, '0.08', '1048576', '2026-01-01T00:00:00Z', '2027-01-01T00:00:00Z'),
    ('PM_SETTLE', 1, 'second', '0', NULL, '0.01', '60', '2020-01-01T00:00:00Z', NULL);

-- What a price adds to balances. Songs also earn points.
INSERT INTO PRICEMODEL_IMPACT (PRICEMODEL_CODE, STEP_NO, IMPACT_NO, RESOURCE, UNIT, AMOUNT) VALUES
    ('PM_VOICE_NAT', 1, 1, 'EUR', 'EUR', '0.10'),
    ('PM_VOICE_NAT', 2, 1, 'EUR', 'EUR', '0.09'),
    ('PM_VOICE_ONNET', 1, 1, 'EUR', 'EUR', '0.05'),
    ('PM_VOICE_BIZ', 1, 1, 'EUR', 'EUR', '0.06'),
    ('PM_VOICE_PRE', 1, 1, 'EUR', 'EUR', '0.12'),
    ('PM_VOICE_SETUP', 1, 1, 'EUR', 'EUR', '0.05'),
    ('PM_VOICE_ROAM_Z2', 1, 1, 'EUR', 'EUR', '0.49'),
    ('PM_VOICE_ROAM_Z3', 1, 1, 'EUR', 'EUR', '0.89'),
    ('PM_SMS_NAT', 1, 1, 'EUR', 'EUR', '0.09'),
    ('PM_SMS_INT', 1, 1, 'EUR', 'EUR', '0.19'),
    ('PM_SMS_BIZ_ROAM', 1, 1, 'EUR', 'EUR', '0.29'),
    ('PM_MMS', 1, 1, 'EUR', 'EUR', '0.39'),
    ('PM_DATA_MB', 1, 1, 'EUR', 'EUR', '0.02'),
    ('PM_DATA_MB', 2, 1, 'EUR', 'EUR', '0.01'),
    ('PM_DATA_DAYFEE', 1, 1, 'EUR', 'EUR', '0.50'),
    ('PM_DATA_ROAM_Z2', 1, 1, 'EUR', 'EUR', '0.35'),
    ('PM_DATA_ROAM_Z3', 1, 1, 'EUR', 'EUR', '0.75'),
    ('PM_METER_KB', 1, 1, 'EUR', 'EUR', '0.004'),
    ('PM_CNT_FILM', 1, 1, 'EUR', 'EUR', '3.99'),
    ('PM_CNT_HD', 1, 1, 'EUR', 'EUR', '1.00'),
    ('PM_CNT_SONG', 1, 1, 'EUR', 'EUR', '0.99'),
    ('PM_CNT_SONG', 1, 2, 'POINTS', 'point', '-5'),
    ('PM_CNT_DEALER', 1, 1, 'EUR', 'EUR', '0.12'),
    ('PM_W_VOICE', 1, 1, 'EUR', 'EUR', '0.21'),
    ('PM_W_DATA', 1, 1, 'EUR', 'EUR', '0.08'),
    ('PM_SETTLE', 1, 1, 'EUR', 'EUR', '0.01');

---------------------------------------------------------------------------------------------------
-- Balances
---------------------------------------------------------------------------------------------------

INSERT INTO BALANCE_GROUP (BALANCE_GROUP_ID, ACCOUNT_ID) VALUES
    (2001, 1001), (2002, 1002), (2003, 1003), (2010, 1010), (2011, 1011), (2012, 1012),
    (2013, 1013), (2020, 1020), (2030, 1030), (2050, 1050), (2060, 1060);

INSERT INTO BALANCE
    (BALANCE_GROUP_ID, RESOURCE, UNIT, AMOUNT, CREDIT_LIMIT, VALID_FROM, VALID_TO)
VALUES
    (2001, 'EUR', 'EUR', '23.7146', '150.00', '2021-04-01T00:00:00Z', NULL),
    (2001, 'POINTS', 'point', '-45', NULL, '2021-04-01T00:00:00Z', NULL),
    (2002, 'EUR', 'EUR', '9.1820', '50.00', '2021-04-01T00:00:00Z', NULL),
    (2003, 'EUR', 'EUR', '1.3500', '10.00', '2025-09-12T00:00:00Z', NULL),
    (2010, 'EUR', 'EUR', '412.0680', '2500.00', '2018-01-15T00:00:00Z', NULL),
    (2011, 'EUR', 'EUR', '36.9850', '500.00', '2023-03-01T00:00:00Z', NULL),
    (2011, 'DATA_PACK', 'byte', '-1950351360', '0', '2026-11-01T00:00:00Z', NULL),
    (2012, 'EUR', 'EUR', '51.2440', '500.00', '2023-03-01T00:00:00Z', NULL),
    (2013, 'EUR', 'EUR', '17.0305', '500.00', '2024-08-15T00:00:00Z', NULL),
    (2020, 'EUR', 'EUR', '-12.36', '0', '2026-01-05T00:00:00Z', NULL),
    (2030, 'EUR', 'EUR', '6.0825', '30.00', '2026-10-01T00:00:00Z', NULL),
    (2030, 'POINTS', 'point', '-10', NULL, '2026-10-01T00:00:00Z', NULL),
    (2050, 'EUR', 'EUR', '0', '75.00', '2022-01-10T00:00:00Z', NULL),
    (2060, 'EUR', 'EUR', '4.8000', NULL, '2022-06-01T00:00:00Z', '2026-10-01T00:00:00Z');

-- The parts add up to their balance: what is owed by billing month, and grants by when they lapse.
INSERT INTO SUB_BALANCE
    (BALANCE_GROUP_ID, RESOURCE, SUB_BALANCE_NO, AMOUNT, VALID_FROM, VALID_TO)
VALUES
    (2001, 'EUR', 1, '14.2000', '2026-10-01T00:00:00Z', '2026-11-01T00:00:00Z'),
    (2001, 'EUR', 2, '9.5146', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (2001, 'POINTS', 1, '-45', '2026-01-01T00:00:00Z', '2027-01-01T00:00:00Z'),
    (2002, 'EUR', 1, '9.1820', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (2003, 'EUR', 1, '1.3500', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (2010, 'EUR', 1, '198.5000', '2026-10-01T00:00:00Z', '2026-11-01T00:00:00Z'),
    (2010, 'EUR', 2, '213.5680', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (2011, 'EUR', 1, '36.9850', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (2011, 'DATA_PACK', 1, '-1950351360', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (2012, 'EUR', 1, '51.2440', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (2013, 'EUR', 1, '17.0305', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (2020, 'EUR', 1, '-2.36', '2026-10-18T09:30:00Z', '2027-10-18T09:30:00Z'),
    (2020, 'EUR', 2, '-10.00', '2026-11-14T17:05:12Z', '2027-11-14T17:05:12Z'),
    (2030, 'EUR', 1, '6.0825', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z'),
    (2030, 'POINTS', 1, '-10', '2026-01-01T00:00:00Z', '2027-01-01T00:00:00Z'),
    (2060, 'EUR', 1, '4.8000', '2026-09-01T00:00:00Z', '2026-10-01T00:00:00Z');

---------------------------------------------------------------------------------------------------
-- Discounts and sponsorships
---------------------------------------------------------------------------------------------------

INSERT INTO DISCOUNT_MODEL (MODEL_NAME, DESCRIPTION) VALUES
    ('FAMILY10', 'Ten percent for a family'),
    ('LOYALTY5', 'Five percent after three years'),
    ('CORP_VOICE15', 'Company discount on calls'),
    ('CORP_DATA20', 'Company discount on data'),
    ('PREPAID_NIGHT', 'Calls at night for half the price'),
    ('WEEKEND_FREE', 'The first hour of calls at a weekend is free'),
    ('STUDENT25', 'A quarter off for students'),
    ('DATA_PACK_2GB', 'Two gigabytes a month, wherever they are used'),
    ('CLUB_SMS', 'Messages of club members'),
    ('WELCOME50', NULL),
    ('SPON_TEEN_SMS', 'The family pays the messages of its children'),
    ('SPON_ROAMING', 'The company pays half of the calls from abroad'),
    ('SPON_ROAM_DATA', 'The company pays half of the data abroad');

INSERT INTO DISCOUNT_RULE (MODEL_NAME, RULE_NO, RULE_NAME, IMPACT_CATEGORY, UNIT) VALUES
    ('FAMILY10', 1, 'ALL_USE', '*', 'EUR'),
    ('LOYALTY5', 1, 'ALL_USE', '*', 'EUR'),
    ('CORP_VOICE15', 1, 'DOMESTIC_CALLS', 'DOMESTIC', 'EUR'),
    ('CORP_VOICE15', 2, 'OTHER_CALLS', '*', 'EUR'),
    ('CORP_DATA20', 1, 'ALL_DATA', '*', 'byte'),
    ('PREPAID_NIGHT', 1, 'NIGHT_CALLS', '*', 'EUR'),
    ('WEEKEND_FREE', 1, 'FIRST_HOUR', '*', 'second'),
    ('STUDENT25', 1, 'ALL_USE', '*', 'EUR'),
    ('DATA_PACK_2GB', 1, 'PACK', '*', 'byte'),
    ('CLUB_SMS', 1, 'MESSAGES', 'DOMESTIC', 'message'),
    ('WELCOME50', 1, 'ALL_USE', '*', 'EUR'),
    ('SPON_TEEN_SMS', 1, 'MESSAGES', 'DOMESTIC', 'message'),
    ('SPON_ROAMING', 1, 'ZONE_2', 'ROAM_Z2', 'EUR'),
    ('SPON_ROAMING', 2, 'ZONE_3', 'ROAM_Z3', 'EUR'),
    ('SPON_ROAM_DATA', 1, 'ALL_ZONES', '*', 'EUR');

INSERT INTO DISCOUNT_STEP
    (MODEL_NAME, RULE_NO, STEP_NO, THRESHOLD_FROM, THRESHOLD_TO, SHARE)
VALUES
    ('FAMILY10', 1, 1, '0', NULL, '10'),
    ('LOYALTY5', 1, 1, '0', NULL, '5'),
    ('CORP_VOICE15', 1, 1, '0', '1000', '15'),
    ('CORP_VOICE15', 1, 2, '1000', NULL, '17.5'),
    ('CORP_VOICE15', 2, 1, '0', NULL, '15'),
    ('CORP_DATA20', 1, 1, '0', '107374182400', '20'),
    ('CORP_DATA20', 1, 2, '107374182400', NULL, '30'),
    ('PREPAID_NIGHT', 1, 1, '0', NULL, '50'),
    ('WEEKEND_FREE', 1, 1, '0', '3600', '100'),
    ('STUDENT25', 1, 1, '0', NULL, '25'),
    ('DATA_PACK_2GB', 1, 1, '0', '2147483648', '100'),
    ('CLUB_SMS', 1, 1, '0', NULL, '30'),
    ('WELCOME50', 1, 1, '0', '25', '50'),
    ('SPON_TEEN_SMS', 1, 1, '0', '500', '100'),
    ('SPON_ROAMING', 1, 1, '0', NULL, '50'),
    ('SPON_ROAMING', 2, 1, '0', '200', '50'),
    ('SPON_ROAM_DATA', 1, 1, '0', '200', '50');

INSERT INTO DISCOUNT_OBJECT
    (DISCOUNT_ID, OWNER_TYPE, OWNER_ID, ACCOUNT_ID, MODEL_NAME, STATUS, VALID_FROM, VALID_TO, PURCHASED_AT)
VALUES
    (5001, '/group/sharing', 4001, 1001, 'FAMILY10', 'ACTIVE', '2021-04-01T00:00:00Z', NULL, '2021-03-27T10:14:31Z'),
    (5002, '/account', 1001, 1001, 'LOYALTY5', 'ACTIVE', '2024-04-01T00:00:00Z', NULL, '2024-04-01T00:00:00Z'),
    (5010, '/group/sharing', 4010, 1010, 'CORP_VOICE15', 'ACTIVE', '2023-03-01T00:00:00Z', NULL, '2023-02-20T08:45:00Z'),
    (5011, '/group/sharing', 4010, 1010, 'CORP_DATA20', 'ACTIVE', '2023-03-01T00:00:00Z', '2026-11-01T00:00:00Z', '2023-02-20T08:45:00Z'),
    (5020, '/account', 1020, 1020, 'PREPAID_NIGHT', 'ACTIVE', '2026-01-05T00:00:00Z', NULL, '2026-01-05T15:22:08Z'),
    (5021, '/account', 1020, 1020, 'WEEKEND_FREE', 'ACTIVE', '2026-07-01T00:00:00Z', '2027-01-01T00:00:00Z', '2026-06-29T19:03:44Z'),
    (5030, '/account', 1030, 1030, 'STUDENT25', 'ACTIVE', '2026-10-01T00:00:00Z', '2028-10-01T00:00:00Z', '2026-09-28T12:40:19Z'),
    (5040, '/account', 1011, 1011, 'DATA_PACK_2GB', 'ACTIVE', '2026-11-01T00:00:00Z', '2026-12-01T00:00:00Z', '2026-10-30T16:11:57Z'),
    (5050, '/group/sharing', 4050, 1050, 'CLUB_SMS', 'ACTIVE', '2022-01-10T00:00:00Z', NULL, '2022-01-07T09:00:00Z'),
    (5060, '/account', 1060, 1060, 'WELCOME50', 'CLOSED', '2022-06-01T00:00:00Z', '2026-10-01T00:00:00Z', '2022-05-30T13:37:02Z');

INSERT INTO SPONSORSHIP_OBJECT
    (SPONSORSHIP_ID, OWNER_TYPE, OWNER_ID, ACCOUNT_ID, MODEL_NAME, STATUS, VALID_FROM, VALID_TO, PURCHASED_AT)
VALUES
    (6001, '/group/sponsor', 4001, 1001, 'SPON_TEEN_SMS', 'ACTIVE', '2025-09-12T00:00:00Z', NULL, '2025-09-10T18:26:50Z'),
    (6010, '/group/sponsor', 4011, 1010, 'SPON_ROAMING', 'ACTIVE', '2024-01-01T00:00:00Z', NULL, '2023-12-12T11:00:00Z'),
    (6011, '/group/sponsor', 4011, 1010, 'SPON_ROAM_DATA', 'ACTIVE', '2024-01-01T00:00:00Z', '2026-12-31T23:59:59Z', '2023-12-12T11:00:00Z');
