-- The reference database: one script for SQLite and PostgreSQL, run once on an empty database.
--
-- No keys and references are declared: rows come from the feeding systems as they are, and a module
-- that can't use a row reports it with its table and key and goes on without it. What each table is
-- keyed by, and what its columns refer to, stands with the table; a column is mandatory unless
-- NULL is explained. An empty text counts as NULL.
--
-- Values that occur in many tables:
--   numbers    identifiers, from 0 up; those that an EDR carries stand there after the "_", such as
--              2001 in "1_2001"
--   decimals   exact decimal texts of at most 18 digits, such as 12.50 or -0.0000012; digits after
--              the point are kept as written
--   times      ISO 8601 in UTC, to the second, such as 2026-01-31T00:00:00Z
--   validity   from VALID_FROM on and before VALID_TO; NULL in VALID_TO is open

---------------------------------------------------------------------------------------------------
-- The framework: which EDR fields hold a service's customer identifiers
---------------------------------------------------------------------------------------------------

-- The pipelines, keyed by PIPELINE.
CREATE TABLE KWL_PIPELINE (
    PIPELINE  VARCHAR(255),  -- the name below "Pipelines" in the registry
    EDRC_DESC VARCHAR(255)   -- the EDR container description that the pipeline uses
);

-- The EDR fields by number, keyed by FIELD_ID.
CREATE TABLE KWL_EDRC_FIELD (
    FIELD_ID   BIGINT,
    FIELD_NAME VARCHAR(255)  -- dotted path, such as DETAIL.A_NUMBER
);

-- Which field stands for a reference, for each service and EDR container description.
CREATE TABLE KWL_ALIAS_MAP (
    KEY_ID    VARCHAR(255),  -- internal service code; NULL: that of events without one
    REFERENCE VARCHAR(255),  -- what the field is used as, such as Account_CustA
    EDRC_DESC VARCHAR(255),  -- as in KWL_PIPELINE
    FIELD_ID  BIGINT         -- as in KWL_EDRC_FIELD
);

---------------------------------------------------------------------------------------------------
-- Account module
---------------------------------------------------------------------------------------------------

-- The accounts, keyed by ACCOUNT_ID.
CREATE TABLE ACCOUNT (
    ACCOUNT_ID BIGINT,
    STATUS     VARCHAR(32),  -- such as ACTIVE, INACTIVE, CLOSED
    CURRENCY   VARCHAR(3),   -- ISO 4217 code
    PARENT_ID  BIGINT        -- the account that pays for this one (ACCOUNT); NULL: it pays itself
);

-- The identifiers by which events name a customer, keyed by IDENTIFIER.
CREATE TABLE CUSTOMER_IDENTIFIER (
    IDENTIFIER VARCHAR(255), -- such as a phone number or a user name
    ACCOUNT_ID BIGINT        -- ACCOUNT
);

-- The services of an account, keyed by ACCOUNT_ID and SERVICE_ID.
CREATE TABLE ACCOUNT_SERVICE (
    ACCOUNT_ID   BIGINT,       -- ACCOUNT
    SERVICE_ID   BIGINT,
    SERVICE_TYPE VARCHAR(255), -- such as /service/telco
    LOGIN        VARCHAR(255), -- NULL: the service has no login
    STATUS       VARCHAR(32)
);

-- The products that an account owns, keyed by ACCOUNT_ID and PRODUCT_ID.
CREATE TABLE ACCOUNT_PRODUCT (
    ACCOUNT_ID    BIGINT,       -- ACCOUNT
    PRODUCT_ID    BIGINT,
    RATEPLAN_CODE VARCHAR(255), -- the rate plan by which the product is rated
    SERVICE_ID    BIGINT,       -- ACCOUNT_SERVICE; NULL: it applies to all services of the account
    EVENT_TYPE    VARCHAR(255), -- it applies to this event type and those below it; *: to all
    STATUS        VARCHAR(32),
    VALID_FROM    VARCHAR(20),  -- time
    VALID_TO      VARCHAR(20)   -- time; NULL: open
);

-- The discounts that an account owns, keyed by ACCOUNT_ID and DISCOUNT_ID.
CREATE TABLE ACCOUNT_DISCOUNT (
    ACCOUNT_ID  BIGINT,       -- ACCOUNT
    DISCOUNT_ID BIGINT,       -- the number of the discount object
    MODEL_NAME  VARCHAR(255), -- the discount model by which it is computed
    SERVICE_ID  BIGINT,       -- ACCOUNT_SERVICE; NULL: it applies to all services of the account
    EVENT_TYPE  VARCHAR(255), -- it applies to this event type and those below it; *: to all
    STATUS      VARCHAR(32),
    VALID_FROM  VARCHAR(20),  -- time
    VALID_TO    VARCHAR(20)   -- time; NULL: open
);

---------------------------------------------------------------------------------------------------
-- Rate plan module
---------------------------------------------------------------------------------------------------

-- The versions of the rate plans, keyed by RATEPLAN_CODE and VERSION.
CREATE TABLE RATEPLAN (
    RATEPLAN_CODE VARCHAR(255),
    VERSION       BIGINT,
    RATEPLAN_ID   BIGINT,       -- the internal number of the rate plan
    MODEL         VARCHAR(255), -- how the plan chooses prices, such as its time model
    VALID_FROM    VARCHAR(20),  -- time
    VALID_TO      VARCHAR(20)   -- time; NULL: open
);

-- What a version charges by which price model, keyed by RATEPLAN_CODE, VERSION and ENTRY_NO. In the
-- three columns that an event is matched with, * matches all. Every entry that matches is charged.
CREATE TABLE RATEPLAN_ENTRY (
    RATEPLAN_CODE   VARCHAR(255), -- with VERSION: RATEPLAN
    VERSION         BIGINT,
    ENTRY_NO        BIGINT,       -- entries are charged in this order
    SERVICE_CODE    VARCHAR(255),
    SERVICE_CLASS   VARCHAR(255),
    IMPACT_CATEGORY VARCHAR(255),
    PRICEMODEL_CODE VARCHAR(255)
);

---------------------------------------------------------------------------------------------------
-- Price module
---------------------------------------------------------------------------------------------------

-- The price models, keyed by PRICEMODEL_CODE.
CREATE TABLE PRICEMODEL (
    PRICEMODEL_CODE VARCHAR(255),
    DESCRIPTION     VARCHAR(255), -- NULL: none
    CURRENCY        VARCHAR(3)    -- ISO 4217 code; the unit of the amounts in PRICEMODEL_STEP
);

-- The steps of a price model, keyed by PRICEMODEL_CODE and STEP_NO.
CREATE TABLE PRICEMODEL_STEP (
    PRICEMODEL_CODE VARCHAR(255), -- PRICEMODEL
    STEP_NO         BIGINT,
    UNIT            VARCHAR(32),  -- of the thresholds and of PER_QUANTITY, such as second or byte
    THRESHOLD_FROM  VARCHAR(40),  -- decimal; the step applies from this quantity on
    THRESHOLD_TO    VARCHAR(40),  -- decimal; and below this one; NULL: open
    AMOUNT          VARCHAR(40),  -- decimal in the model's currency, for each PER_QUANTITY
    PER_QUANTITY    VARCHAR(40),  -- decimal
    VALID_FROM      VARCHAR(20),  -- time
    VALID_TO        VARCHAR(20)   -- time; NULL: open
);

-- What a step does to balances, keyed by PRICEMODEL_CODE, STEP_NO and IMPACT_NO.
CREATE TABLE PRICEMODEL_IMPACT (
    PRICEMODEL_CODE VARCHAR(255), -- with STEP_NO: PRICEMODEL_STEP
    STEP_NO         BIGINT,
    IMPACT_NO       BIGINT,
    RESOURCE        VARCHAR(255), -- the balance that changes, such as EUR or FREE_SECONDS
    UNIT            VARCHAR(32),  -- of the amount
    AMOUNT          VARCHAR(40)   -- decimal, for each PER_QUANTITY; below zero it is a grant
);

---------------------------------------------------------------------------------------------------
-- Balance module
---------------------------------------------------------------------------------------------------

-- The balance groups, keyed by BALANCE_GROUP_ID.
CREATE TABLE BALANCE_GROUP (
    BALANCE_GROUP_ID BIGINT,
    ACCOUNT_ID       BIGINT        -- the account that the group belongs to
);

-- The balances of a group, one a resource, keyed by BALANCE_GROUP_ID and RESOURCE.
CREATE TABLE BALANCE (
    BALANCE_GROUP_ID BIGINT,       -- BALANCE_GROUP
    RESOURCE         VARCHAR(255), -- such as EUR or FREE_SECONDS
    UNIT             VARCHAR(32),  -- of the amounts, such as EUR or second
    AMOUNT           VARCHAR(40),  -- decimal; above zero it is owed, below zero it is there to use
    CREDIT_LIMIT     VARCHAR(40),  -- decimal; NULL: none
    VALID_FROM       VARCHAR(20),  -- time
    VALID_TO         VARCHAR(20)   -- time; NULL: open
);

-- The parts of a balance, keyed by BALANCE_GROUP_ID, RESOURCE and SUB_BALANCE_NO.
CREATE TABLE SUB_BALANCE (
    BALANCE_GROUP_ID BIGINT,       -- with RESOURCE: BALANCE
    RESOURCE         VARCHAR(255),
    SUB_BALANCE_NO   BIGINT,
    AMOUNT           VARCHAR(40),  -- decimal in the unit of the balance
    VALID_FROM       VARCHAR(20),  -- time
    VALID_TO         VARCHAR(20)   -- time; NULL: open
);

---------------------------------------------------------------------------------------------------
-- Discount module
---------------------------------------------------------------------------------------------------

-- The discount models, keyed by MODEL_NAME.
CREATE TABLE DISCOUNT_MODEL (
    MODEL_NAME  VARCHAR(255),
    DESCRIPTION VARCHAR(255)       -- NULL: none
);

-- The rules of a model, keyed by MODEL_NAME and RULE_NO.
CREATE TABLE DISCOUNT_RULE (
    MODEL_NAME      VARCHAR(255),  -- DISCOUNT_MODEL
    RULE_NO         BIGINT,        -- rules are applied in this order
    RULE_NAME       VARCHAR(255),
    IMPACT_CATEGORY VARCHAR(255),  -- which charges it discounts; *: all
    UNIT            VARCHAR(32)    -- of the thresholds of its steps, such as EUR or second
);

-- The steps of a rule, keyed by MODEL_NAME, RULE_NO and STEP_NO.
CREATE TABLE DISCOUNT_STEP (
    MODEL_NAME     VARCHAR(255),   -- with RULE_NO: DISCOUNT_RULE
    RULE_NO        BIGINT,
    STEP_NO        BIGINT,
    THRESHOLD_FROM VARCHAR(40),    -- decimal in the rule's unit; the step applies from here on
    THRESHOLD_TO   VARCHAR(40),    -- decimal; and below this; NULL: open
    SHARE          VARCHAR(40)     -- decimal; percent of the charge that is taken off
);

-- The discount objects, keyed by DISCOUNT_ID.
CREATE TABLE DISCOUNT_OBJECT (
    DISCOUNT_ID  BIGINT,
    OWNER_TYPE   VARCHAR(255),     -- such as /account or /group/sharing
    OWNER_ID     BIGINT,
    ACCOUNT_ID   BIGINT,           -- the owner's account
    MODEL_NAME   VARCHAR(255),     -- DISCOUNT_MODEL
    STATUS       VARCHAR(32),
    VALID_FROM   VARCHAR(20),      -- time
    VALID_TO     VARCHAR(20),      -- time; NULL: open
    PURCHASED_AT VARCHAR(20)       -- time
);

-- The sponsorship objects, keyed by SPONSORSHIP_ID.
CREATE TABLE SPONSORSHIP_OBJECT (
    SPONSORSHIP_ID BIGINT,
    OWNER_TYPE     VARCHAR(255),   -- such as /group/sponsor
    OWNER_ID       BIGINT,
    ACCOUNT_ID     BIGINT,         -- the owner's account
    MODEL_NAME     VARCHAR(255),   -- DISCOUNT_MODEL
    STATUS         VARCHAR(32),
    VALID_FROM     VARCHAR(20),    -- time
    VALID_TO       VARCHAR(20),    -- time; NULL: open
    PURCHASED_AT   VARCHAR(20)     -- time
);
